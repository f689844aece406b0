#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <QDialog>
#include <QPointer>
#include <QQuickWidget>
#include <QTest>
#include <QVBoxLayout>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

QQuickWidget* hosted(QWidget& controller) {
    return controller.findChild<QQuickWidget*>();
}

void open(QWidget& widget) {
    widget.resize(kPhone);
    widget.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
    settle();
}

QQuickItem* itemIn(QQuickWidget& widget, const char* objectName) {
    return findItem(widget.rootObject(), QString::fromLatin1(objectName));
}

void clickIn(QQuickWidget& widget, QQuickItem* item) {
    QTest::mouseClick(&widget, Qt::LeftButton, Qt::NoModifier, sceneRect(*item).center().toPoint());
    settle();
}

void touchIn(QQuickWidget& widget, QQuickItem* item) {
    static QPointingDevice* screen = QTest::createTouchDevice();
    const QPoint at = sceneRect(*item).center().toPoint();
    QTest::touchEvent(&widget, screen).press(0, at, &widget);
    settle();
    QTest::touchEvent(&widget, screen).release(0, at, &widget);
    settle();
}

TEST(DocumentScannerVC, ShowsTheScreenEdgeToEdgeAndTouchesNothingBefore) {
    const FakeCamera camera;
    DocumentScannerVC controller([](auto&) {}, camera.scannerCamera());
    EXPECT_EQ(hosted(controller), nullptr);
    EXPECT_EQ(*camera.managersMade, 0);
    open(controller);
    QQuickWidget* widget = hosted(controller);
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(*camera.managersMade, 1);
    EXPECT_FALSE(widget->rootObject()->property("isPresented").toBool());
    for (const QSize size : {kPhone, QSize(640, 360)}) {
        controller.resize(size);
        settle();
        EXPECT_EQ(widget->geometry(), QRect(QPoint(), size));
        EXPECT_EQ(widget->rootObject()->size(), QSizeF(size));
    }
    controller.hide();
    controller.show();
    settle();
    EXPECT_EQ(hosted(controller), widget);
    EXPECT_EQ(*camera.managersMade, 1);
    camera.otherQueues->runAll();
    EXPECT_EQ(std::ranges::count(camera.machine().log, "beginConfiguration"), 2)
        << "permission is checked at each showing";
}

TEST(DocumentScannerVC, CompletionGetsWhatTheManagerGives) {
    const FakeCamera camera;
    int delivered = 0;
    DocumentScannerVC controller([&](auto& photo) { delivered += photo ? 100 : 1; },
                                 camera.scannerCamera());
    open(controller);
    camera.makeReady();
    QQuickWidget& widget = *hosted(controller);
    clickIn(widget, itemIn(widget, "captureArea"));
    touchIn(widget, itemIn(widget, "captureArea"));
    QTest::keyClick(&widget, Qt::Key_Return);
    camera.mainQueue->advance(0.1);
    camera.otherQueues->runAll();
    const auto output = camera.platform->photoOutput.lock();
    ASSERT_EQ(output->requests.size(), 3u);
    while (!output->requests.empty())
        output->finish({}, CaptureError{"lost"});
    EXPECT_EQ(delivered, 0) << "delivered outside the main queue";
    camera.mainQueue->runAll();
    EXPECT_EQ(delivered, 3);
    EXPECT_TRUE(controller.isVisible());
}

TEST(DocumentScannerVC, ReleasesTheCameraWithTheScreen) {
    const FakeCamera camera;
    auto controller = std::make_unique<DocumentScannerVC>([](auto&) {}, camera.scannerCamera());
    open(*controller);
    camera.makeReady();
    controller.reset();
    EXPECT_EQ(camera.machine().log.back(), "session released");
}

struct Taps {
    int retaken = 0;
    int confirmed = 0;
};

std::unique_ptr<ImagePreviewViewController> previewing(Taps& taps) {
    return std::make_unique<ImagePreviewViewController>(
        "Check the photo", std::nullopt, [&taps] { ++taps.retaken; },
        [&taps] { ++taps.confirmed; });
}

TEST(ImagePreviewViewController, ReadsTitleAndImageOnceAndClosuresAtEachTap) {
    Taps taps;
    const auto controller = previewing(taps);
    controller->titleText = "Set before the showing";
    open(*controller);
    QQuickWidget& widget = *hosted(*controller);
    EXPECT_EQ(widget.geometry(), QRect(QPoint(), kPhone));
    controller->titleText = "Set later";
    settle();
    EXPECT_EQ(itemIn(widget, "title")->property("text"), "Set before the showing");

    clickIn(widget, itemIn(widget, "retake"));
    touchIn(widget, itemIn(widget, "confirm"));
    EXPECT_EQ(taps.retaken, 1);
    EXPECT_EQ(taps.confirmed, 1);
    int replaced = 0;
    controller->didTapConfirm = [&] { ++replaced; };
    controller->didTapRetake = nullptr;
    clickIn(widget, itemIn(widget, "confirm"));
    clickIn(widget, itemIn(widget, "retake"));
    EXPECT_EQ(replaced, 1);
    EXPECT_EQ(taps.confirmed, 1);
    EXPECT_EQ(taps.retaken, 1);
    EXPECT_TRUE(controller->isVisible());
}

TEST(ImagePreviewViewController, TapsAfterItsEndCallNothing) {
    Taps taps;
    QWidget keeper;
    QVBoxLayout layout(&keeper);
    auto controller = previewing(taps);
    open(*controller);
    QQuickWidget* widget = hosted(*controller);
    layout.addWidget(widget);
    controller.reset();
    open(keeper);
    clickIn(*widget, itemIn(*widget, "retake"));
    clickIn(*widget, itemIn(*widget, "confirm"));
    clickIn(*widget, itemIn(*widget, "closeArea"));
    EXPECT_EQ(taps.retaken + taps.confirmed, 0);
    EXPECT_TRUE(keeper.isVisible());
}

TEST(ImagePreviewViewController, MayBeReleasedByItsOwnTap) {
    Taps taps;
    auto* controller = previewing(taps).release();
    const QPointer<QWidget> alive = controller;
    controller->didTapRetake = [controller] { controller->deleteLater(); };
    open(*controller);
    clickIn(*hosted(*controller), itemIn(*hosted(*controller), "retake"));
    EXPECT_TRUE(waitFor([&] { return !alive; }));
}

TEST(Controllers, CloseEndsTheirPresentation) {
    struct Row {
        const char* name;
        bool isInDialog;
        bool isInWindow;
    };
    for (const auto& [name, isInDialog, isInWindow] : std::vector<Row>{
             {"a window by itself", false, false},
             {"in a dialog", true, false},
             {"in a window", false, true},
         }) {
        SCOPED_TRACE(name);
        Taps taps;
        QDialog dialog;
        QWidget window;
        int rejected = 0;
        QObject::connect(&dialog, &QDialog::rejected, [&] { ++rejected; });
        const auto controller = previewing(taps);
        QWidget* presentation = controller.get();
        if (isInDialog)
            presentation = &dialog;
        else if (isInWindow)
            presentation = &window;
        std::unique_ptr<QVBoxLayout> layout;
        if (presentation != controller.get()) {
            layout = std::make_unique<QVBoxLayout>(presentation);
            layout->addWidget(controller.get());
        }
        open(*presentation);
        QQuickWidget& widget = *hosted(*controller);
        clickIn(widget, itemIn(widget, "balance"));
        EXPECT_TRUE(presentation->isVisible());
        clickIn(widget, itemIn(widget, "closeArea"));
        EXPECT_FALSE(presentation->isVisible());
        EXPECT_EQ(rejected, isInDialog ? 1 : 0);
        presentation->show();
        settle();
        QTest::keyClick(&widget, Qt::Key_Escape);
        EXPECT_FALSE(presentation->isVisible());
        EXPECT_EQ(taps.retaken + taps.confirmed, 0);
        controller->setParent(nullptr);
    }
}

TEST(ControllersDeathTest, FormBuildersAreRefused) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    constexpr auto text = "init\\(coder:\\) has not been implemented";
    EXPECT_DEATH(DocumentScannerVC{FormBuilderTag()}, text);
    EXPECT_DEATH(ImagePreviewViewController{FormBuilderTag()}, text);
}

}  // namespace
}  // namespace kestrelid::test
