#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>
#include <kestrelid/screens/PassportScanController.h>

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <QDialog>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QQuickWidget>
#include <QStackedWidget>
#include <QTest>
#include <QVBoxLayout>
#include <utility>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

QQuickWidget* hosted(QWidget& controller) {
    return controller.findChild<QQuickWidget*>();
}

void open(QWidget& widget) {
    widget.resize(kPhone);
    widget.show();
    widget.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&widget, kPatience)) << "keys would go nowhere";
    settle();
}

QQuickItem* itemIn(QQuickWidget& widget, const char* objectName) {
    return findItem(widget.rootObject(), QString::fromLatin1(objectName));
}

TEST(DocumentScannerVC, ShowsTheScreenEdgeToEdgeAndHoldsTheCameraWhileItLives) {
    const FakeCamera camera;
    int delivered = 0;
    auto controller = std::make_unique<DocumentScannerVC>(
        [&](const auto& photo) { delivered += photo ? 100 : 1; }, camera.scannerCamera());
    QQuickWidget* widget = hosted(*controller);
    ASSERT_NE(widget, nullptr);
    settle();
    EXPECT_EQ(*camera.managersMade, 0);
    open(*controller);
    for (const QSize size : {kPhone, QSize(640, 360)}) {
        controller->resize(size);
        settle();
        EXPECT_EQ(widget->geometry(), QRect(QPoint(), size));
        EXPECT_EQ(widget->rootObject()->size(), QSizeF(size));
    }
    camera.makeReady();
    const auto answered = [&] {
        camera.pass();
        camera.refusePhotos();
        camera.mainQueue->runAll();
        return std::exchange(delivered, 0);
    };
    clickIn(*widget, itemIn(*widget, "captureArea"));
    EXPECT_EQ(answered(), 1) << "the mouse";
    touchIn(*widget, itemIn(*widget, "captureArea"));
    EXPECT_EQ(answered(), 1) << "a finger";
    QTest::keyClick(widget, Qt::Key_Return);
    EXPECT_EQ(answered(), 1) << "the key";

    controller->hide();
    controller->show();
    settle();
    EXPECT_EQ(hosted(*controller), widget);
    EXPECT_EQ(*camera.managersMade, 1);
    camera.makeReady();
    EXPECT_EQ(camera.count("beginConfiguration"), 2) << "permission is checked at each showing";
    controller.reset();
    EXPECT_EQ(camera.machine().log.back(), "session released");
}

TEST(DocumentScannerVC, HandsOnWhatIsSetBeforeTheFirstShowing) {
    const FakeCamera camera;
    DocumentScannerVC plain([](const auto&) {}, camera.scannerCamera());
    open(plain);
    EXPECT_FALSE(hosted(plain)->acceptDrops()) << "its host's drops are swallowed";

    DocumentScannerVC controller([](const auto&) {}, camera.scannerCamera());
    controller.assistance = ScannerAssistance::all();
    controller.assistance.limits.leastArea = 0.25;
    controller.assistance.limits.hold = std::chrono::seconds(3);
    controller.layout.adaptsToSize = true;
    controller.textScale = 1.5;
    controller.safeAreaMargins = {1, 2, 3, 4};
    open(controller);
    EXPECT_TRUE(hosted(controller)->acceptDrops());
    const QQuickItem* screen = hosted(controller)->rootObject();
    for (const auto& [name, value] : std::map<const char*, QVariant>{{"guides", true},
                                                                     {"outlinesPage", true},
                                                                     {"offersControls", true},
                                                                     {"importsPhotos", true},
                                                                     {"capturesByItself", false},
                                                                     {"showsWholeFrame", false},
                                                                     {"adaptsToSize", true},
                                                                     {"readsZone", false},
                                                                     {"textScale", 1.5}}) {
        EXPECT_GE(screen->metaObject()->indexOfProperty(name), 0) << name;
        EXPECT_EQ(screen->property(name), value) << name;
    }
    const QVariantMap limits = screen->property("guidanceLimits").toMap();
    EXPECT_EQ(limits.value("leastArea"), 0.25);
    EXPECT_EQ(limits.value("hold"), 3.0);
    EXPECT_EQ(sceneRect(*itemIn(*hosted(controller), "content")).topLeft(), QPointF(21, 2));
}

TEST(DocumentScannerVC, TellsTheZoneToItsHostWhichMayReleaseItThen) {
    const FakeCamera camera;
    std::string told;
    auto controller =
        std::make_unique<DocumentScannerVC>([](const auto&) {}, camera.scannerCamera());
    controller->didReadZone = [&](const LiveZone& live) {
        told += live.zone->field(ZoneFieldKind::documentNumber)->text.view();
        told += live.isStrict() ? " strict" : ", ";
        if (live.isStrict())
            controller.reset();
    };
    open(*controller);
    camera.makeReady();
    camera.showZone(kSpecimenZone, 2);
    EXPECT_EQ(told, "L898902C3, L898902C3 strict");
    EXPECT_EQ(camera.machine().log.back(), "session released");
}

TEST(DocumentScannerVC, ControlsReachTheHostWhichMayReleaseIt) {
    const FakeCamera camera;
    camera.machine().controls = {{.control = CameraControl::torch}};
    auto controller =
        std::make_unique<DocumentScannerVC>([](const auto&) {}, camera.scannerCamera());
    controller->setControl(CameraControl::torch, 0.5);  // there is no camera yet
    controller->didChangeControls = [&](const std::vector<CameraControlStatus>& controls) {
        controller->setControl(controls.at(0).control, 1.0);
        controller.reset();
    };
    open(*controller);
    camera.makeReady();
    camera.platform->session.lock()->tell();
    camera.mainQueue->runAll();
    EXPECT_FALSE(controller);
    camera.otherQueues->runAll();
    const std::vector<std::string>& log = camera.machine().log;
    EXPECT_EQ(std::ranges::count(log, "torch 1.00"), 1);
    EXPECT_EQ(std::ranges::count(log, "torch 0.50"), 0);
    EXPECT_EQ(log.back(), "session released");
}

TEST(DocumentScannerVC, TellsOfCamerasAndSwitchesAlsoBeforeItIsShown) {
    const FakeCamera camera;
    std::string told;
    DocumentScannerVC controller([](const auto&) {}, camera.scannerCamera());
    controller.didChangeCameras = [&](const std::vector<CameraDescription>& cameras) {
        for (const CameraDescription& one : cameras)
            told += one.name + (one.isPresent ? ";" : " is gone;");
    };
    camera.machine().cameras = {{.name = "Lid", .formats = {}}};
    controller.switchCamera("Lid");
    open(controller);
    camera.makeReady();
    EXPECT_EQ(camera.count("replaceInput Fake camera"), 0);
    controller.switchCamera("Fake camera");
    camera.pass();
    EXPECT_EQ(camera.count("replaceInput Fake camera"), 1) << "it had the one chosen before";
    camera.plug({});
    EXPECT_EQ(told, "Lid;Lid is gone;");
}

std::unique_ptr<ImagePreviewViewController> previewing(std::string& taps) {
    return std::make_unique<ImagePreviewViewController>(
        "Check the photo", std::nullopt, [&taps] { taps += "retake "; },
        [&taps] { taps += "confirm "; });
}

TEST(ImagePreviewViewController, ReadsTitleAndImageOnceAndClosuresAtEachTap) {
    std::string taps;
    auto controller = previewing(taps);
    controller->titleText = "Set before the showing";
    controller->textScale = 1.5;
    controller->adaptsToSize = true;
    EXPECT_EQ(hosted(*controller), nullptr);
    open(*controller);
    QQuickWidget& widget = *hosted(*controller);
    EXPECT_EQ(widget.rootObject()->property("textScale"), 1.5);
    EXPECT_EQ(widget.rootObject()->property("adaptsToSize"), true);
    EXPECT_EQ(widget.geometry(), QRect(QPoint(), kPhone));
    controller->titleText = "Set later";
    settle();
    EXPECT_EQ(itemIn(widget, "title")->property("text"), "Set before the showing");

    clickIn(widget, itemIn(widget, "retake"));
    touchIn(widget, itemIn(widget, "confirm"));
    controller->didTapConfirm = [&] { taps += "replaced"; };
    controller->didTapRetake = nullptr;
    clickIn(widget, itemIn(widget, "confirm"));
    clickIn(widget, itemIn(widget, "retake"));
    EXPECT_EQ(taps, "retake confirm replaced");
    EXPECT_TRUE(controller->isVisible());

    QWidget keeper;  // where the screen outlives its controller
    widget.setParent(&keeper);
    controller.reset();
    widget.show();
    open(keeper);
    for (const char* name : {"retake", "confirm", "closeArea"})
        clickIn(widget, itemIn(widget, name));
    EXPECT_EQ(taps, "retake confirm replaced");
    EXPECT_TRUE(keeper.isVisible());
}

TEST(ImagePreviewViewController, MayBeReleasedByItsOwnTap) {
    std::string taps;
    auto* controller = previewing(taps).release();
    const QPointer<QWidget> alive = controller;
    controller->didTapRetake = [controller] { controller->deleteLater(); };
    open(*controller);
    clickIn(*hosted(*controller), itemIn(*hosted(*controller), "retake"));
    EXPECT_TRUE(waitFor([&] { return !alive; }));
}

TEST(Controllers, CloseEndsTheirPresentation) {
    for (const std::string place : {"alone", "dialog", "window"}) {
        SCOPED_TRACE(place);
        std::string taps;
        QDialog dialog;
        QWidget window;
        int rejected = 0;
        QObject::connect(&dialog, &QDialog::rejected, [&] { ++rejected; });
        const auto controller = previewing(taps);
        QWidget* presentation = controller.get();
        if (place != "alone") {
            presentation = place == "dialog" ? &dialog : &window;
            (new QVBoxLayout(presentation))->addWidget(controller.get());
        }
        open(*presentation);
        QQuickWidget& widget = *hosted(*controller);
        clickIn(widget, itemIn(widget, "closeArea"));
        EXPECT_FALSE(presentation->isVisible());
        EXPECT_EQ(rejected, place == "dialog" ? 1 : 0);
        EXPECT_EQ(taps, "");
        controller->setParent(nullptr);
    }
}

// What has the focus in a window: a widget, or a control of the screen in it.
std::string focusedIn(const QWidget& window) {
    const QWidget* widget = window.focusWidget();
    const auto* screen = qobject_cast<const QQuickWidget*>(widget);
    const QObject* focused = widget;
    if (screen)
        focused = screen->quickWindow()->activeFocusItem();
    if (focused && focused->objectName() == "area")
        focused = static_cast<const QQuickItem*>(focused)->parentItem();
    return focused ? focused->objectName().toStdString() : "nothing";
}

std::string press(const QWidget& window, Qt::Key key, int times) {
    std::string focused;
    for (int time = 0; time < times; ++time) {
        QTest::keyClick(window.windowHandle(), key,
                        key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        settle();
        focused += focusedIn(window) + ' ';
    }
    return focused;
}

TEST(Controllers, TabLeadsThroughTheScreenAndOnToTheHostsWidgets) {
    const FakeCamera camera;
    std::string taps;
    struct Row {
        const char* name;
        std::function<std::unique_ptr<QWidget>()> make;
        std::string controls;
        std::string reversed;
    };
    for (const auto& [name, make, controls, reversed] : std::vector<Row>{
             {"scanner",
              [&] {
                  return std::make_unique<DocumentScannerVC>([](const auto&) {},
                                                             camera.scannerCamera());
              },
              "closeArea captureArea ", "captureArea closeArea "},
             {"preview", [&] { return previewing(taps); }, "closeArea retake confirm ",
              "confirm retake closeArea "},
             {"a screen in a screen",
              [&] {
                  auto scan = std::make_unique<PassportScanController>([](const auto&) {},
                                                                       camera.scannerCamera());
                  scan->assistance = {};
                  return scan;
              },
              "closeArea captureArea ", "captureArea closeArea "},
         }) {
        SCOPED_TRACE(name);
        const auto count = static_cast<int>(std::ranges::count(controls, ' '));

        const auto alone = make();
        open(*alone);
        EXPECT_EQ(press(*alone, Qt::Key_Tab, count + 1), controls + "closeArea ");
        EXPECT_EQ(press(*alone, Qt::Key_Backtab, count), reversed);

        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        QLineEdit before;
        QLineEdit after;
        QPushButton disabled;
        const auto screen = make();
        before.setObjectName("before");
        after.setObjectName("after");
        disabled.setEnabled(false);
        for (QWidget* widget :
             std::initializer_list<QWidget*>{&before, screen.get(), &disabled, &after})
            layout->addWidget(widget);
        before.setFocus();
        open(window);
        EXPECT_EQ(focusedIn(window), "before") << "the host's wish";
        EXPECT_EQ(press(window, Qt::Key_Tab, count + 3), controls + "after before closeArea ");
        EXPECT_EQ(hosted(*screen)->rootObject()->property("isKeyboardInUse"), true);
        EXPECT_EQ(press(window, Qt::Key_Backtab, count + 3),
                  "before after " + reversed + "before ");
        screen->setFocus();
        EXPECT_EQ(press(window, Qt::Key_Backtab, 1), "before ");
    }
}

TEST(Controllers, KeysWorkAtOnceWhereAScreenReplacesAPage) {
    const FakeCamera camera;
    std::string taps;
    QStackedWidget pages;
    auto* button = new QPushButton;
    pages.addWidget(button);
    button->setFocus();
    open(pages);
    const auto replace = [&](QWidget* page) {
        QWidget* old = pages.currentWidget();
        pages.setCurrentIndex(pages.addWidget(page));
        delete old;
        settle();
    };
    replace(new DocumentScannerVC([&](const auto&) { taps += "photo "; }, camera.scannerCamera()));
    camera.makeReady();
    QTest::keyClick(pages.windowHandle(), Qt::Key_Space);
    camera.pass();
    camera.refusePhotos();
    camera.mainQueue->runAll();
    replace(previewing(taps).release());
    EXPECT_EQ(press(pages, Qt::Key_Tab, 2), "closeArea retake ") << "a Tab is lost";
    QTest::keyClick(pages.windowHandle(), Qt::Key_Return);
    QTest::keyClick(pages.windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(taps, "photo retake ");
    EXPECT_FALSE(pages.isVisible());
}

TEST(ControllersDeathTest, FormBuildersAreRefused) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    constexpr auto text = ": Fatal error: init\\(coder:\\) has not been implemented";
    EXPECT_DEATH(DocumentScannerVC{FormBuilderTag()},
                 std::string("Kestrelid/DocumentScannerViewController:23") + text);
    EXPECT_DEATH(ImagePreviewViewController{FormBuilderTag()},
                 std::string("Kestrelid/ImagePreviewViewController:34") + text);
}

}  // namespace
}  // namespace kestrelid::test
