#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <gtest/gtest.h>
#include <QQmlComponent>
#include <QTest>
#include <QTranslator>
#include <stdexcept>
#include <thread>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{360, 640};

ShownScreen scanner(const FakeCamera& camera, QVariantMap properties = {}, QSize size = kPhone) {
    if (!properties.contains("completion"))
        properties["completion"] = completing([](const auto&) {});
    return {QStringLiteral("DocumentScannerView"), properties, size, camera.scannerCamera()};
}

// Described by JavaScript, in the window of another one.
std::unique_ptr<QQuickItem> scannerOf(ShownScreen& host, const QByteArray& properties) {
    QQmlComponent component(&host.engine());
    component.setData("import QtQuick\nimport Kestrelid\nDocumentScannerView {" + properties + "}",
                      {});
    std::unique_ptr<QQuickItem> screen(qobject_cast<QQuickItem*>(component.create()));
    if (!screen)
        throw std::runtime_error(component.errorString().toStdString());
    screen->setSize(kPhone);
    screen->setParentItem(host.window().contentItem());
    settle();
    return screen;
}

// The pixel tests compare the rest.
TEST(ScannerScreen, LayoutInPointsWithinTheSafeArea) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera, {}, {800, 844});
    screen.setSafeArea({30, 47, 50, 34});
    for (const auto& [name, rect] : std::map<QString, QRectF>{
             {"background", {0, 0, 800, 844}},
             {"titleBar", {50, 47, 680, 41}},
             {"frame", {50, 144, 680, 506}},
             {"preview", {52, 146, 676, 502}},
             {"bracket2", {658, 578, 74, 74}},
             {"disc", {366, 738, 48, 48}},
         })
        EXPECT_EQ(screen.rect(name), rect) << name.toStdString();
}

TEST(ScannerScreen, NewestFrameOfAnyThreadIsShownAndOlderOnesAreLetGo) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const auto surface = camera.surface();
    std::weak_ptr<std::byte[]> first;
    for (const int value : {255, 0}) {
        constexpr std::size_t kSize = 64 * 64 * 4;
        auto pixels = std::make_shared<std::byte[]>(kSize);
        std::fill_n(pixels.get(), kSize, std::byte(value));
        if (value == 255)
            first = pixels;
        std::thread([&] {
            surface->show(*Bitmap::wrap(64, 64, 256, PixelFormat::bgra8, std::move(pixels), kSize),
                          Orientation::up, false);
        }).join();
        EXPECT_EQ(screen.grab().pixelColor(100, 150).red(), value);
    }
    EXPECT_TRUE(first.expired());
    screen.release();
    surface->show(blankBitmap(64, 64), Orientation::up, false);  // nobody is left to show it
}

TEST(ScannerScreen, PermissionIsCheckedAtEachAppearanceByOneManager) {
    const FakeCamera camera;
    ShownScreen hidden = scanner(camera, {}, {});
    settle();
    EXPECT_EQ(*camera.managersMade, 0) << "nothing is touched before";

    ShownScreen screen = scanner(camera, {{"camera", "Second camera"}});
    EXPECT_EQ(camera.optionsGiven->camera, "Second camera");
    const auto expectChecks = [&](int expected) {
        settle();
        camera.otherQueues->runAll();
        EXPECT_EQ(camera.count("beginConfiguration"), expected);
        EXPECT_EQ(camera.count("startRunning"), 1) << "a running session refuses a second input";
        EXPECT_EQ(*camera.managersMade, 1);
    };
    expectChecks(1);
    screen.window().hide();
    expectChecks(1);
    screen.window().show();
    expectChecks(2);
    screen.root()->setVisible(false);
    screen.root()->setVisible(true);
    expectChecks(3);
    for (const bool isGranted : {false, true}) {  // withdrawn elsewhere, and given back
        camera.authorization->answer(isGranted);
        screen.window().hide();
        screen.window().show();
        settle();
        EXPECT_EQ(screen.item("preview") != nullptr, isGranted);
        EXPECT_EQ(screen.item("accessRequired")->isVisible(), !isGranted);
    }
    expectChecks(4);
    camera.mainQueue->advance(2.0);
    screen.release();
    EXPECT_EQ(camera.machine().log.back(), "session released");
}

TEST(ScannerScreen, EachTapWhileReadyAsksForAPhotoATenthOfASecondLater) {
    const FakeCamera camera;
    int delivered = 0;
    ShownScreen screen = scanner(
        camera,
        {{"completion", completing([&](const auto& photo) { delivered += photo ? 100 : 1; })}});
    QQuickItem* button = screen.item("captureArea");
    const auto press = [&](Qt::Key key) { QTest::keyClick(&screen.window(), key); };
    click(button);
    touch(button);
    press(Qt::Key_Space);
    camera.pass();
    EXPECT_EQ(camera.count("capturePhoto"), 0) << "not ready yet";

    camera.makeReady();
    click(button);
    camera.pass(0.09);
    EXPECT_EQ(camera.count("capturePhoto"), 0);
    camera.pass(0.02);
    EXPECT_EQ(camera.count("capturePhoto"), 1);
    click(button);
    click(button);
    touch(button);
    press(Qt::Key_Space);
    press(Qt::Key_Return);
    clickAt(screen.window(), {100, 592});  // beside the ring
    clickAt(screen.window(), {180, 300});  // in the picture
    camera.pass();
    EXPECT_EQ(camera.count("capturePhoto"), 6);
    camera.refusePhotos();
    EXPECT_EQ(delivered, 0) << "delivered outside the main queue";
    camera.mainQueue->runAll();
    EXPECT_EQ(delivered, 6);
}

TEST(ScannerScreen, CompletionOfJavaScriptGetsNullWhereThereIsNoPhoto) {
    const FakeCamera camera;
    ShownScreen host = scanner(camera);
    const auto screen =
        scannerOf(host, "property string got; "
                        "completion: photo => got += photo === null ? 'null' : typeof photo");
    camera.makeReady();
    click(findItem(screen.get(), "captureArea"));
    camera.pass();
    camera.refusePhotos();
    camera.mainQueue->runAll();
    EXPECT_EQ(screen->property("got"), "null");
}

TEST(ScannerScreen, ZoneIsReadWhereTheHostAsksGrowsAndGoesWithThePage) {
    const FakeCamera camera;
    ShownScreen host = scanner(camera);
    camera.makeReady();
    camera.showZone(kSpecimenZone, 3);
    EXPECT_TRUE(host.root()->property("zone").isNull()) << "nobody has asked";

    const auto screen = scannerOf(host, R"(
        property string told
        completion: photo => {}
        readsZone: true
        onZoneChanged: {
            const birth = zone?.fields.find(field => field.kind === "dateOfBirth")
            told += zone ? [zone.format, zone.strict, zone.frames, zone.lines.length, birth.text,
                            birth.date.month, birth.checkDigit, zone.fields[1].state.isKnown,
                            zone.problems.map(problem => problem.kind + " " + problem.field)
                           ].join() + ";" : "none;"
        })");
    camera.makeReady();
    std::vector<std::string> damaged = kSpecimenZone;
    damaged[1].replace(damaged[1].find("7408"), 4, "7409");
    camera.showZone(kSpecimenZone, 2);
    camera.showZone({}, 3);
    camera.showZone(damaged, 1);
    EXPECT_EQ(screen->property("told").toString().toStdString(),
              "TD3,false,1,2,740812,8,passed,true,;TD3,true,2,2,740812,8,passed,true,;none;"
              "TD3,false,1,2,740912,9,failed,true,"
              "checkDigitFailed dateOfBirth,checkDigitFailed composite;");
}

TEST(ScannerScreen, TellsWhatTheCameraIsDoing) {
    const FakeCamera camera;
    ShownScreen host = scanner(camera);
    const auto screen = scannerOf(host, R"(
        property string told
        completion: photo => {}
        onCameraStateChanged: told += cameraState + " " + cameraCause + ";")");
    camera.makeReady();
    const auto session = camera.platform->session.lock();
    session->lose();
    camera.mainQueue->runAll();
    session->heal();
    camera.mainQueue->runAll();
    EXPECT_EQ(screen->property("told").toString().toStdString(), "live ;lost unplugged;live ;");
}

TEST(ScannerScreen, TellsAndSetsTheCamerasControls) {
    const FakeCamera camera;
    camera.machine().controls = {{.control = CameraControl::focus,
                                  .value = 0.5,
                                  .step = 0.25,
                                  .hasAutomatic = true,
                                  .isAutomatic = true},
                                 {.control = CameraControl::torch}};
    ShownScreen host = scanner(camera);
    const auto screen = scannerOf(host, R"(
        property string told
        completion: photo => {}
        onControlsChanged: {
            told += JSON.stringify(controls)
            setControl("torch", 1)
            setControl("focus", 0.25)
            setControl("focus", null)
            setControl("focus", undefined)
            setControl("focus", "near")
            setControl("lens", 1)
        })");
    camera.makeReady();
    camera.machine().log.clear();
    camera.platform->session.lock()->tell();
    camera.mainQueue->runAll();
    camera.otherQueues->runAll();
    EXPECT_EQ(
        screen->property("told").toString().toStdString(),
        R"([{"control":"focus","hasAutomatic":true,"isAutomatic":true,"step":0.25,"value":0.5})"
        R"(,{"control":"torch","hasAutomatic":false,"isAutomatic":false,"step":0,"value":0}])");
    EXPECT_EQ(camera.machine().log,
              (std::vector<std::string>{"torch 1.00", "focus 0.25", "focus automatic",
                                        "focus automatic"}));
}

TEST(ScannerScreen, ListsTheCamerasAndSwitchesWithoutMakingRowsAnew) {
    const FakeCamera camera;
    ShownScreen host = scanner(camera);
    const auto screen = scannerOf(host, R"(
        id: view
        property string told
        property string rows
        completion: photo => {}
        onCurrentCameraChanged: told += "now " + currentCamera + ";"
        Repeater {
            model: view.cameras
            onItemAdded: (index, item) => view.told += "+" + item.name + ";"
            onItemRemoved: (index, item) => view.told += "-" + item.name + ";"
            Item {
                required property int index
                required property string name
                required property string position
                required property bool present
                required property bool infrared
                required property string obstacle
                readonly property string row: [index, name, position, present, infrared, obstacle].join()
                onRowChanged: view.told += row + ";"
            }
        })");
    const auto told = [&] {
        const std::string all = screen->property("told").toString().toStdString();
        screen->setProperty("told", "");
        return all;
    };
    const CameraDescription lid{
        .name = "Lid", .formats = {}, .position = CameraPosition::back, .obstacle = "too odd"};
    const CameraDescription desk{.name = "Desk", .formats = {}, .isInfrared = true};
    camera.makeReady();
    EXPECT_EQ(told(), "now Fake camera;");
    camera.plug({lid, desk});
    EXPECT_EQ(told(), "0,Lid,back,true,false,too odd;+Lid;1,Desk,unknown,true,true,;+Desk;");
    QMetaObject::invokeMethod(screen.get(), "switchCamera", Q_ARG(QString, "Desk"));
    camera.pass();
    camera.mainQueue->runAll();
    EXPECT_EQ(camera.machine().log.back(), "replaceInput Desk");
    EXPECT_EQ(told(), "now Desk;");
    camera.plug({desk});
    const std::string unplugged = told();
    EXPECT_EQ(unplugged.find('+'), std::string::npos) << unplugged;
    EXPECT_EQ(unplugged.find('-'), std::string::npos) << unplugged;
    EXPECT_NE(unplugged.find("0,Desk,"), std::string::npos) << unplugged;
    EXPECT_NE(unplugged.find("1,Lid,back,false,"), std::string::npos) << unplugged;
}

TEST(ScannerScreen, CloseCallsTheHostsFunctionAndNothingElse) {
    const FakeCamera camera;
    int closed = 0;
    ShownScreen screen = scanner(camera, {{"dismiss", acting([&] { ++closed; })},
                                          {"completion", completing([](auto&) { FAIL(); })}});
    camera.makeReady();
    click(screen.item("closeArea"));
    clickAt(screen.window(), {5, 35});  // 44 points around the symbol
    EXPECT_EQ(closed, 2);
    QTest::keyClick(&screen.window(), Qt::Key_Escape);
    EXPECT_EQ(closed, 3);
    clickAt(screen.window(), {60, 17});
    EXPECT_EQ(closed, 3);
    EXPECT_TRUE(screen.window().isVisible());
    EXPECT_TRUE(camera.platform->session.lock()->isRunning());
}

TEST(ScannerScreen, TabGoesRoundAndShowsTheFocusUntilAPress) {
    const FakeCamera camera;
    ShownScreen screen = scanner(camera);
    const auto isMarked = [&] { return screen.root()->property("isKeyboardInUse").toBool(); };
    EXPECT_FALSE(isMarked());
    for (const char* expected : {"closeArea", "captureArea", "closeArea"}) {
        QTest::keyClick(&screen.window(), Qt::Key_Tab);
        EXPECT_EQ(screen.window().activeFocusItem()->objectName(), expected);
        EXPECT_TRUE(isMarked());
    }
    clickAt(screen.window(), {180, 300});
    EXPECT_FALSE(isMarked());
}

TEST(ScannerScreen, BengaliWhereTheHostInstallsIt) {
    FakeCamera camera;
    camera.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::denied);
    QTranslator bengali;
    ASSERT_TRUE(bengali.load("kestrelid_bn", KESTRELID_TRANSLATIONS_DIR));
    QCoreApplication::installTranslator(&bengali);
    ShownScreen screen = scanner(camera);
    EXPECT_EQ(screen.item("title")->property("text"), "আপনার পাসপোর্ট স্ক্যান করুন");
    EXPECT_EQ(screen.item("accessRequired")->property("text"), "ক্যামেরা ব্যবহারের অনুমতি প্রয়োজন");
    QCoreApplication::removeTranslator(&bengali);
}

}  // namespace
}  // namespace kestrelid::test
