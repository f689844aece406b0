#include "tests/screens/ScanRig.h"

#include <kestrelid/ImageFile.h>

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <QClipboard>
#include <QDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QQmlComponent>
#include <QQuickWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <string>
#include <string_view>
#include <utility>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{390, 760};

// A scan whose host writes down what it gets.
struct Scan : ScanRig {
    explicit Scan(const QVariantMap& properties = {}) {
        const auto write = [this](const std::optional<PassportScanResult>& result) {
            const bool isPassport =
                result && result->examination.isPassport(PassportProof::verdict);
            got += !result ? "nothing;" : isPassport ? "passport;" : "photo;";
            if (onCompletion)
                onCompletion();
        };
        given = {{"completion", QVariant::fromValue(PassportScanCompletion(write))},
                 {"dismiss", acting([this] { got += "closed;"; })}};
        given.insert(properties);
    }

    // Shown at last, so that a test can change the machine before.
    ShownScreen& screen() {
        if (!shown)
            shown = std::make_unique<ShownScreen>("PassportScan", given, kPhone, scannerCamera());
        return *shown;
    }
    [[nodiscard]] std::string page() {
        return screen().root()->property("name").toString().toStdString();
    }
    [[nodiscard]] std::string textOf(const char* item) {
        const QQuickItem* found = screen().item(item);
        return found ? found->property("text").toString().toStdString() : "no such text";
    }
    void tap(const char* button) { ScanRig::tap(screen(), button); }
    void press(Qt::Key key) {
        QTest::keyClick(&screen().window(), key);
        settle();
    }
    // Until the button has the focus.
    void tabTo(const char* button) {
        const QQuickItem* wanted = screen().item(button);
        for (int tabs = 0; tabs < 20; ++tabs) {
            const QQuickItem* focused = screen().window().activeFocusItem();
            if (focused && (focused == wanted || wanted->isAncestorOf(focused)))
                return;
            press(Qt::Key_Tab);
        }
        ADD_FAILURE() << "Tab does not reach " << button;
    }
    // The advice or the fields, as they are read.
    [[nodiscard]] std::string told(const char* column) {
        QString lines;
        for (const QQuickItem* row : screen().item(column)->childItems()) {
            for (const QQuickItem* part : row->childItems()) {
                if (part->isVisible() && part->property("text").isValid())
                    lines += part->property("text").toString() + '|';
            }
        }
        return lines.toStdString();
    }
    [[nodiscard]] bool isTold(const char* column, std::string_view wanted) {
        return told(column).find(wanted) != std::string::npos;
    }

    std::string got;
    std::function<void()> onCompletion;
    QVariantMap given;
    std::unique_ptr<ShownScreen> shown;
};

TEST(PassportScan, LeadsFromThePhotoToTheFieldsOfThePassport) {
    Scan scan;
    EXPECT_EQ(scan.page(), "scanning");
    scan.takePhoto(scan.screen());
    EXPECT_EQ(scan.page(), "preview");
    EXPECT_EQ(scan.camera.machine().log.back(), "session released");
    scan.tap("confirm");
    EXPECT_EQ(scan.page(), "judging");
    scan.recognise();
    EXPECT_EQ(scan.page(), "result");
    EXPECT_EQ(scan.textOf("heading"),
              "This is a passport; its machine-readable lines were checked.");
    EXPECT_EQ(scan.told("fields"),
              "Surname|ERIKSSON|Given names|ANNA MARIA|Document number|L898902C3|"
              "Nationality|Utopia (specimens), UTO|Issuing state|Utopia (specimens), UTO|"
              "Date of birth|12 August 1974|Sex|Female|Date of expiry|15 April 2012|");
    EXPECT_FALSE(scan.screen().item("detailTexts")->isVisible());
    scan.tap("details");
    EXPECT_TRUE(scan.screen().item("detailTexts")->isVisible());
    EXPECT_EQ(scan.got, "");
    scan.tap("continue");
    scan.tap("continue");
    EXPECT_EQ(scan.got, "passport;closed;");
}

TEST(PassportScan, SaysWhatHelpsWhereThereIsNoPassport) {
    Scan scan({{"acceptsAnyPhoto", true}});
    *scan.text = FakeText(std::vector<std::string>{"RECEIPT"});
    scan.zones->seen.clear();
    scan.scan(scan.screen());
    EXPECT_EQ(scan.textOf("heading"), "No passport was recognised in this photo.");
    EXPECT_TRUE(scan.isTold("advice", "Open the passport at the page with the photo."));
    EXPECT_FALSE(scan.screen().item("continue")->isVisible());
    scan.press(Qt::Key_Return);  // what is at hand is to scan again
    EXPECT_EQ(scan.page(), "scanning");
    scan.scan(scan.screen());
    scan.tap("continueAnyway");
    EXPECT_EQ(scan.got, "photo;closed;");
}

TEST(PassportScan, MarksDoubtAndKeepsToWhatIsKnownOfDates) {
    Scan scan;
    auto damaged = kSpecimenZone;
    damaged[1].replace(damaged[1].find("L898902C3"), 9, "L898902C4");
    damaged[1].replace(damaged[1].find("7408122"), 7, "74<<<<1");  // a birth without month and day
    scan.zones->seen = {clearReading(damaged)};
    scan.scan(scan.screen());
    EXPECT_EQ(scan.textOf("heading"), "This is a passport.");
    EXPECT_TRUE(scan.isTold("fields", "Document number|L898902C4|please check|"));
    EXPECT_TRUE(scan.isTold("fields", "Date of birth|1974|"));
    EXPECT_TRUE(scan.isTold("advice", "not read beyond doubt"));
}

TEST(PassportScan, WhatFailsHasAPageThatSaysWhatToDo) {
    const QTemporaryDir folder;
    const QString good = folder.filePath("photo.png");
    ASSERT_FALSE(writeImage(good.toStdString(), ScanRig::photo()));
    Scan scan;
    scan.takePhoto(scan.screen(), false);
    EXPECT_EQ(scan.page(), "failed");
    EXPECT_EQ(scan.textOf("heading"), "The photo could not be taken.");
    auto* copied = new QMimeData;
    copied->setUrls({QUrl::fromLocalFile(good)});
    QGuiApplication::clipboard()->setMimeData(copied);
    QTest::keyClick(&scan.screen().window(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return scan.page() == "preview"; })) << "a picture may be pasted";
    scan.tap("retake");
    scan.takePhoto(scan.screen(), false);
    scan.tap("again");
    EXPECT_EQ(scan.page(), "scanning");

    const auto open = [&](const QString& file, const char* then) {
        QMetaObject::invokeMethod(scan.screen().root(), "open",
                                  Q_ARG(QVariant, QUrl::fromLocalFile(file)));
        EXPECT_TRUE(waitFor([&] { return scan.page() == then; })) << file.toStdString();
    };
    open("/no/such.jpg", "failed");
    EXPECT_EQ(scan.textOf("heading"), "The picture could not be opened.");
    EXPECT_EQ(scan.textOf("cause"), "It is not a file on this machine.");
    open(good, "preview");

    scan.outlines->failure = "outline.onnx is missing";
    scan.tap("confirm");
    scan.recognise();
    EXPECT_EQ(scan.textOf("heading"), "The photo could not be checked.");
    EXPECT_EQ(scan.textOf("cause"), "Rectangle request failed: outline.onnx is missing");
    EXPECT_EQ(*scan.console, scan.textOf("cause")) << "the host's console is told too";
    scan.press(Qt::Key_Escape);
    EXPECT_EQ(scan.page(), "scanning");
}

TEST(PassportScan, OnlyTheLastPhotoThatIsWaitedForIsJudged) {
    Scan scan;
    scan.takePhoto(scan.screen());
    scan.tap("confirm");
    scan.press(Qt::Key_Return);  // what is at hand is to cancel
    EXPECT_EQ(scan.page(), "preview");
    scan.recognise();
    EXPECT_EQ(scan.page(), "preview");
    scan.tap("confirm");
    scan.recognition->runOne();  // the outline is being found
    scan.tap("cancel");
    scan.tap("retake");
    scan.takePhoto(scan.screen());
    scan.tap("confirm");
    scan.recognise();
    EXPECT_EQ(scan.page(), "result");
    EXPECT_EQ(scan.outlines->requests, 1) << "what nobody waits for takes no time";

    scan.tap("again");
    scan.takePhoto(scan.screen());
    scan.tap("confirm");
    scan.screen().release();
    scan.recognise();
    EXPECT_EQ(scan.got, "");
}

TEST(PassportScan, KeysAloneLeadToTheResultAndEscapeOneStepBack) {
    Scan scan;
    const auto toPreview = [&] {
        scan.camera.makeReady();
        scan.press(Qt::Key_Space);
        scan.answer();
    };
    const auto toJudging = [&] {
        toPreview();
        scan.tabTo("confirm");
        scan.press(Qt::Key_Return);
    };
    const auto expectBack = [&](const char* page, const char* before) {
        EXPECT_EQ(scan.page(), page);
        scan.press(Qt::Key_Escape);
        EXPECT_EQ(scan.page(), before) << "from " << page;
    };
    scan.screen();
    toPreview();
    expectBack("preview", "scanning");
    toJudging();
    expectBack("judging", "preview");
    scan.tabTo("confirm");
    scan.press(Qt::Key_Return);
    scan.recognise();
    expectBack("result", "scanning");
    toJudging();
    scan.recognise();
    scan.press(Qt::Key_Return);
    EXPECT_EQ(std::exchange(scan.got, ""), "passport;closed;");
    scan.tabTo("again");
    scan.press(Qt::Key_Space);
    expectBack("scanning", "scanning");
    EXPECT_EQ(scan.got, "nothing;closed;");
}

TEST(PassportScan, AHostThatBeginsAnewKeepsIt) {
    Scan scan;
    scan.onCompletion = [&] { QMetaObject::invokeMethod(scan.screen().root(), "restart"); };
    for (const char* expected : {"passport;", "passport;"}) {
        scan.scan(scan.screen());
        scan.tap("continue");
        EXPECT_EQ(scan.page(), "scanning");
        EXPECT_EQ(std::exchange(scan.got, ""), expected);
    }
    scan.press(Qt::Key_Escape);
    EXPECT_EQ(scan.got, "nothing;");
}

TEST(PassportScan, ThePageOfThePhotoCanBeLookedAtClosely) {
    Scan scan({{"textScale", 2.0}});  // more than the window shows
    scan.scan(scan.screen());
    QQuickItem* photo = scan.screen().item("photo");
    const QQuickItem* scroller = scan.screen().item("scroller");
    const QPointF middle = sceneRect(*photo).center();
    const auto page = [&] { return photo->property("pageRect").toRectF(); };
    const auto scrolled = [&] { return scroller->property("contentY").toDouble(); };
    const auto wheel = [&](int angle, Qt::KeyboardModifiers keys) {
        QWheelEvent event(middle, middle, {}, {0, angle}, Qt::NoButton, keys, Qt::NoScrollPhase,
                          false);
        QCoreApplication::sendEvent(&scan.screen().window(), &event);
        settle();
    };
    const QRectF whole = page();
    const QPoint at = (middle + QPointF(60, 30)).toPoint();
    QTest::mouseDClick(&scan.screen().window(), Qt::LeftButton, {}, at);
    settle();
    EXPECT_EQ(page().size(), whole.size() * 2.5);
    const QPointF inPhoto = photo->mapFromScene(at);
    EXPECT_EQ((inPhoto - page().topLeft()) / 2.5, inPhoto - whole.topLeft());

    const auto drag = [&](const QPoint& by) {
        QTest::mousePress(&scan.screen().window(), Qt::LeftButton, {}, at);
        for (int step = 1; step <= 10; ++step)
            QTest::mouseMove(&scan.screen().window(), at + by * step / 10);
        QTest::mouseRelease(&scan.screen().window(), Qt::LeftButton, {}, at + by);
        settle();
    };
    for (int time = 0; time < 4; ++time)
        drag({120, 120});
    EXPECT_EQ(page().topLeft(), QPointF(0, 0)) << "it stops at the edges";
    EXPECT_EQ(scrolled(), 0) << "what is dragged is the photo";

    wheel(-120, Qt::ControlModifier);
    EXPECT_NEAR(page().width(), whole.width() * 2, 0.01);
    scan.tabTo("photo");
    scan.press(Qt::Key_0);
    EXPECT_EQ(page(), whole);
    scan.press(Qt::Key_Plus);
    EXPECT_EQ(page().center(), whole.center());
    scan.press(Qt::Key_Minus);
    scan.press(Qt::Key_Minus);
    EXPECT_EQ(page(), whole) << "never smaller";
    scan.press(Qt::Key_Down);
    EXPECT_GT(scrolled(), 0) << "nothing of the photo lies below";
    scan.press(Qt::Key_Home);
    wheel(-120, {});
    EXPECT_TRUE(waitFor([&] { return scrolled() > 0; }));
    EXPECT_EQ(page(), whole);
}

TEST(PassportScan, JavaScriptGetsTheResultAsAnObject) {
    ScanRig rig;
    ShownScreen host("ScreenText", {{"pointSize", 1}}, {}, rig.scannerCamera());
    QQmlComponent component(&host.engine());
    component.setData(R"(
        import QtQuick
        import Kestrelid
        PassportScan {
            id: scan
            property string got
            closesWhenDone: false
            completion: result => got += result === null ? "null;" : [
                result.isPassport, result.isTrusted, result.confidence, result.reasons.length,
                result.text.split("\n").length, result.zone.format, result.outline[0].x,
                typeof result.photo].join()
        })",
                      {});
    const std::unique_ptr<QQuickItem> scan(qobject_cast<QQuickItem*>(component.create()));
    ASSERT_TRUE(scan) << component.errorString().toStdString();
    scan->setSize(kPhone);
    scan->setParentItem(host.window().contentItem());
    host.window().resize(kPhone);
    host.window().show();
    settle();
    const auto item = [&](const char* name) { return findItem(scan.get(), name); };
    rig.camera.makeReady();
    click(item("captureArea"));
    rig.answer();
    click(findItem(item("confirm"), "area"));
    rig.recognise();
    click(findItem(item("continue"), "area"));
    EXPECT_EQ(scan->property("got").toString().toStdString(),
              "true,true,0.5,3,4,TD3,0.203125,object");
    EXPECT_EQ(scan->property("name"), "result") << "it is the host that goes on";
}

TEST(PassportScanController, TellsTheResultOnceForEachShowing) {
    const ScanRig rig;
    std::string got;
    QDialog dialog;
    auto* controller = new PassportScanController(
        [&](const std::optional<PassportScanResult>& result) {
            got += result ? std::to_string(result->photo.bitmap()->width()) + " " +
                                std::to_string(result->examination.lines.size()) + ";"
                          : "nothing;";
        },
        rig.scannerCamera(), &dialog);
    (new QVBoxLayout(&dialog))->addWidget(controller);
    const auto open = [&] {
        dialog.resize(kPhone);
        dialog.show();
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog, kPatience));
        settle();
        rig.camera.makeReady();
    };
    const auto tap = [&](const char* name, const char* area) {
        auto* shown = controller->findChild<QQuickWidget*>();
        QQuickItem* item = findItem(shown->rootObject(), name);
        ASSERT_TRUE(item) << name;
        clickIn(*shown, findItem(item, area));
    };
    open();
    tap("captureArea", "captureArea");
    rig.answer();
    tap("confirm", "area");
    rig.recognise();
    tap("continue", "area");
    EXPECT_EQ(std::exchange(got, ""), "640 4;");
    EXPECT_FALSE(dialog.isVisible());
    open();
    tap("closeArea", "closeArea");
    EXPECT_EQ(std::exchange(got, ""), "nothing;");
    EXPECT_FALSE(dialog.isVisible());
    settle();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(rig.camera.machine().log.back(), "session released");
    open();
    dialog.close();  // by its frame
    settle();
    EXPECT_EQ(std::exchange(got, ""), "nothing;");
    open();
    delete controller;
    settle();
    EXPECT_EQ(got, "");
}

}  // namespace
}  // namespace kestrelid::test
