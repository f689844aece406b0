#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <gtest/gtest.h>
#include <QAccessible>
#include <QBuffer>
#include <QClipboard>
#include <QDropEvent>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace kestrelid::test {
namespace {

constexpr QSize kPhone{390, 760};

const RectangleObservation kGoodPage = pageAt(0.1, 0.1, 0.9, 0.9);

std::vector<CameraDescription> camerasNamed(const std::vector<std::string>& names) {
    std::vector<CameraDescription> cameras;
    for (const std::string& name : names)
        cameras.push_back({.name = name, .formats = {}});
    return cameras;
}

Bitmap blackFrame(int width, int height) {
    const auto size = std::size_t{4} * static_cast<std::size_t>(width * height);
    return *Bitmap::wrap(width, height, std::ptrdiff_t{4} * width, PixelFormat::bgra8,
                         std::shared_ptr<const std::byte[]>(new std::byte[size]{}), size);
}

// A scanning screen that helps, and what it says.
class ScannerHelp : public testing::Test {
protected:
    void SetUp() override { QAccessible::setActive(true); }
    void TearDown() override {
        QAccessible::setActive(false);
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }

    ShownScreen show(QVariantMap properties = {{"assistance", true}}, QSize size = kPhone) {
        if (!properties.contains("completion"))
            properties["completion"] = completing([this](const auto& photo) {
                got_ += photo ? std::to_string(photo->bitmap()->width()) + ";" : "none;";
            });
        properties.insert("dismiss", acting([this] { ++closings_; }));
        return {QStringLiteral("DocumentScannerView"), properties, size, camera_.scannerCamera()};
    }

    static std::string textOf(ShownScreen& screen, const char* name) {
        const QQuickItem* item = screen.item(name);
        return item && item->isVisible() ? item->property("text").toString().toStdString() : "";
    }

    static bool tap(ShownScreen& screen, const char* name) {
        QQuickItem* button = screen.item(name);
        if (!button || !button->isVisible())
            return false;
        screen.grab();  // puts the buttons in their places
        click(findItem(button, "area"));
        return true;
    }

    // How often that was said.
    static qsizetype count(const QSignalSpy& spoken, const char* words) {
        return std::ranges::count(spoken, QVariantList{QString::fromUtf8(words)});
    }

    FakeCamera camera_;
    std::string got_;
    int closings_ = 0;
};

TEST_F(ScannerHelp, NothingIsLookedForOrMadeWhereNobodyAsks) {
    ShownScreen screen = show({});
    camera_.makeReady();
    camera_.showPage(kGoodPage, 3);
    camera_.platform->session.lock()->lose();
    camera_.mainQueue->runAll();
    EXPECT_EQ(camera_.outlines->requests, 0);
    for (const char* name : {"guidanceLine", "pageOutline", "captureRing", "cameraStatePanel",
                             "photoImport", "importButton", "torch", "zoomIn"})
        EXPECT_EQ(screen.item(name), nullptr) << name;
    camera_.mainQueue->advance(20.0);
    EXPECT_EQ(*camera_.managersMade, 1);
}

TEST_F(ScannerHelp, OneLineForEachAdviceSpokenOnce) {
    struct Row {
        std::string advice;
        std::string text;
        std::optional<RectangleObservation> page = kGoodPage;
        QVariantMap limits = {};
        bool isPassport = false;
    };
    for (const Row& row : std::vector<Row>{
             {"none", ""},
             {"none", "Passport in view", kGoodPage, {}, true},
             {"noPage", "Place the passport's photo page in the frame", std::nullopt},
             {"noPage", "Passport in view", std::nullopt, {}, true},
             {"moveCloser", "Move closer", pageAt(0.4, 0.4, 0.6, 0.6)},
             {"moveBack", "Move back a little", pageAt(0, 0, 1, 1)},
             {"wholePage", "Keep the whole page in the frame", pageAt(0, 0.2, 0.8, 0.8), {}, true},
             {"tooDark", "Turn on the light", kGoodPage, {{"leastBrightness", 0.9}}},
             {"glare", "Tilt the page to avoid the reflection", kGoodPage, {{"mostGlare", -1}}},
             {"holdStill", "Hold still", kGoodPage, {{"leastSharpness", 2}}},
         }) {
        SCOPED_TRACE(row.advice + ": " + row.text);
        camera_.machine().controls = {{.control = CameraControl::torch}};
        ShownScreen screen =
            show({{"guides", true}, {"offersControls", true}, {"guidanceLimits", row.limits}});
        const QSignalSpy spoken(screen.root(), SIGNAL(announced(QString)));
        camera_.makeReady();
        camera_.platform->session.lock()->tell();
        camera_.mainQueue->runAll();
        EXPECT_EQ(textOf(screen, "guidance"), "") << "before anything was seen";
        const QRectF frame = screen.rect("frame");
        if (row.isPassport)
            camera_.judge(true);
        camera_.showPage(row.page, 12);
        settle();
        EXPECT_EQ(screen.root()->property("advice").toString().toStdString(), row.advice);
        EXPECT_EQ(textOf(screen, "guidance"), row.text);
        EXPECT_EQ(screen.rect("frame"), frame) << "the line moved something";
        EXPECT_EQ(count(spoken, row.text.c_str()), row.text.empty() ? 0 : 1);
        camera_.detector->completions.clear();
    }
}

TEST_F(ScannerHelp, CameraThatDoesNotWorkIsExplainedAndTriedAgainWithoutFlicker) {
    camera_.machine().hasDevice = false;
    ShownScreen screen = show();
    const QSignalSpy spoken(screen.root(), SIGNAL(announced(QString)));
    QString states;
    // How often it is tried again in that time.
    const auto tries = [&](double seconds) {
        const int before = *camera_.managersMade;
        for (double left = seconds; left > 0.0; left -= 0.5) {
            camera_.mainQueue->advance(0.5);
            camera_.otherQueues->runAll();
            camera_.mainQueue->runAll();
            states += QString::fromStdString(textOf(screen, "problem")) + '\n';
        }
        return *camera_.managersMade - before;
    };
    camera_.otherQueues->runAll();
    camera_.mainQueue->runAll();
    EXPECT_EQ(tries(1.5), 0);
    EXPECT_EQ(tries(1.0), 1) << "after 2 s";
    EXPECT_EQ(tries(3.0), 0);
    EXPECT_EQ(tries(1.0), 1) << "4 s later";
    EXPECT_EQ(tries(24.0), 3) << "every 8 s";
    screen.root()->setVisible(false);
    states.clear();
    EXPECT_EQ(tries(30.0), 0) << "while it is hidden";
    states.clear();
    screen.root()->setVisible(true);
    EXPECT_EQ(tries(1.5), 0);
    EXPECT_EQ(tries(1.0), 1);
    emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
    EXPECT_EQ(tries(0.5), 1) << "the person is back";
    camera_.plug(camerasNamed({"Desk"}));
    EXPECT_EQ(tries(0.5), 0) << "the first list is no news";
    const int before = *camera_.managersMade;
    camera_.plug(camerasNamed({"Desk", "Lid"}));
    EXPECT_EQ(*camera_.managersMade, before + 1) << "a camera was plugged in";
    EXPECT_EQ(states.remove("No camera was found\n"), "");
    EXPECT_EQ(textOf(screen, "accessRequired"), "");
    EXPECT_EQ(count(spoken, "No camera was found. Connect the camera. It starts by itself."), 1);

    camera_.machine().hasDevice = true;
    ASSERT_TRUE(tap(screen, "tryAgain"));
    camera_.makeReady();
    EXPECT_EQ(screen.item("cameraStatePanel"), nullptr);
    ASSERT_NE(camera_.surface(), nullptr) << "the new session has no picture";
    EXPECT_EQ(tries(60.0), 0) << "it works";
}

TEST_F(ScannerHelp, EachProblemOfACamera) {
    QTemporaryDir folder;
    QFile broken(folder.filePath("broken.jpg"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    struct Row {
        std::string heading;
        std::function<void(FakeCamera&)> breakIt = {};
        QString camera = {};
        AuthorizationStatus permission = AuthorizationStatus::authorized;
    };
    const auto loseDevice = [](FakeCamera& camera) { camera.machine().hasDevice = false; };
    const auto closeDevice = [](FakeCamera& camera) { camera.machine().deviceOpens = false; };
    for (const Row& row : std::vector<Row>{
             {"The camera was disconnected",
              [](FakeCamera& camera) {
                  camera.makeReady();
                  camera.platform->session.lock()->lose();
              }},
             {"The camera does not start", closeDevice},
             {"The camera does not start",
              [](FakeCamera& camera) { camera.machine().starts = false; }},
             {"This program may not use the camera", {}, {}, AuthorizationStatus::denied},
             {"No camera was found", loseDevice},
             {"The camera “Lid” was not found", loseDevice, "Lid"},
             {"The file “none.jpg” was not found", loseDevice, folder.filePath("none.jpg")},
             {"The file “none.jpg” was not found",
              {},
              folder.filePath("none.jpg"),
              AuthorizationStatus::denied},
             {"The file “broken.jpg” cannot be shown", closeDevice, broken.fileName()},
         }) {
        SCOPED_TRACE(row.heading + " " + row.camera.toStdString());
        FakeCamera camera;
        *camera.authorization = FakeAuthorization(row.permission);
        const bool breaksLater = row.heading.find("disconnected") != std::string::npos;
        if (row.breakIt && !breaksLater)
            row.breakIt(camera);
        ShownScreen screen(QStringLiteral("DocumentScannerView"),
                           {{"completion", {}}, {"assistance", true}, {"camera", row.camera}},
                           kPhone, camera.scannerCamera());
        if (breaksLater)
            row.breakIt(camera);
        camera.makeReady();
        EXPECT_EQ(textOf(screen, "problem"), row.heading);
        EXPECT_EQ(textOf(screen, "guidance"), "");
        EXPECT_EQ(screen.item("disc")->property("color"), QColor(142, 142, 147)) << "not grey";
        EXPECT_TRUE(findItem(screen.item("usePicture"), "area")->isVisible());
        const bool hasCause = breaksLater || !camera.machine().deviceOpens;
        EXPECT_EQ(textOf(screen, "problemCause"), breaksLater ? "unplugged"
                                                  : hasCause  ? "in use by another program"
                                                              : "");
    }
}

// The question takes the focus itself: asking whenever the focus comes back would never end.
TEST_F(ScannerHelp, DeniedCameraIsTriedByItselfOnlyOnceItIsAllowed) {
    *camera_.authorization = FakeAuthorization(AuthorizationStatus::denied);
    ShownScreen screen = show();
    settle();
    for (const auto& [status, text, managers] :
         std::vector<std::tuple<AuthorizationStatus, std::string, int>>{
             {AuthorizationStatus::denied, "Allow it in the settings", 1},
             {AuthorizationStatus::notDetermined, "Try again, and allow it", 2},
             {AuthorizationStatus::authorized, "", 3}}) {
        *camera_.authorization = FakeAuthorization(status);
        emit qGuiApp->applicationStateChanged(Qt::ApplicationActive);
        camera_.mainQueue->advance(20.0);
        if (status == AuthorizationStatus::notDetermined) {
            EXPECT_EQ(*camera_.managersMade, 1) << "asked without a tap";
            ASSERT_TRUE(tap(screen, "tryAgain"));
            camera_.authorization->answer(false);
            *camera_.authorization = FakeAuthorization(status);  // what the portal says ever after
            camera_.mainQueue->runAll();
        }
        EXPECT_EQ(*camera_.managersMade, managers);
        camera_.makeReady();
        EXPECT_EQ(textOf(screen, "problemAdvice").substr(0, text.size()), text);
        EXPECT_EQ(textOf(screen, "problem").empty(), text.empty());
    }
}

TEST_F(ScannerHelp, PhotoWithoutATapOncePerPageUnlessThePersonSaysNo) {
    ShownScreen screen = show({{"capturesByItself", true}});
    const QSignalSpy spoken(screen.root(), SIGNAL(announced(QString)));
    camera_.makeReady();
    camera_.judge(true);
    const auto photos = [&] {
        camera_.pass();
        return camera_.count("capturePhoto");
    };
    camera_.showPage(kGoodPage, 4);
    settle();
    EXPECT_EQ(photos(), 0);
    EXPECT_EQ(count(spoken, "Taking a photo. Hold still. Press Escape to cancel."), 1);
    EXPECT_TRUE(
        waitFor([&] { return screen.item("captureRing")->property("progress").toDouble() > 0.4; }));
    QTest::keyClick(&screen.window(), Qt::Key_Escape);
    camera_.showPage(kGoodPage, 8);
    EXPECT_EQ(photos(), 0);
    EXPECT_EQ(closings_, 0) << "Escape has closed the screen as well";

    const auto layDownAnew = [&] {
        camera_.judge(false);
        camera_.judge(false);
        camera_.showPage({}, 1);
        camera_.judge(true);
    };
    layDownAnew();
    camera_.showPage(kGoodPage, 3);
    clickAt(screen.window(), {195, 300});  // in the picture
    camera_.showPage(kGoodPage, 8);
    EXPECT_EQ(photos(), 0);
    layDownAnew();
    camera_.showPage(kGoodPage, 20);
    EXPECT_EQ(photos(), 1);
    layDownAnew();
    camera_.showPage(kGoodPage, 3);
    click(screen.item("captureArea"));
    camera_.showPage(kGoodPage, 8);
    EXPECT_EQ(photos(), 2) << "the tap's alone";
    QTest::keyClick(&screen.window(), Qt::Key_Escape);
    EXPECT_EQ(closings_, 1);
    camera_.refusePhotos();
}

TEST_F(ScannerHelp, OutlineLiesOnThePageAndGoesWithIt) {
    ShownScreen screen = show({{"outlinesPage", true}});
    camera_.makeReady();
    // Turned by a quarter, then mirrored: 3:4, of which the frame cuts both sides.
    camera_.surface()->show(blackFrame(640, 480), Orientation::right, true);
    screen.grab();
    settle();
    camera_.showPage(pageAt(0.25, 0.25, 0.75, 0.75), 1);
    QQuickItem* outline = screen.item("pageOutline");
    EXPECT_TRUE(waitFor([&] { return outline->isVisible(); }));
    const QRectF preview = screen.rect("preview");
    const double scale = std::max(preview.width() / 480, preview.height() / 640);
    // A quarter turn and a mirror leave the first corner where it is, and swap its neighbours.
    const QPointF to = preview.center() - QPointF(120, 160) * scale;
    const QPointF corner = sceneRect(*screen.item("outlineCorner0")).topLeft();
    const QPointF next = sceneRect(*screen.item("outlineCorner1")).topLeft();
    EXPECT_LT((corner - to).manhattanLength(), 0.01) << corner.x() << " " << corner.y();
    EXPECT_NEAR(next.x(), to.x(), 0.01);
    camera_.showPage({}, 1);
    EXPECT_TRUE(outline->isVisible()) << "a blink of the finder";
    EXPECT_TRUE(waitFor([&] { return !outline->isVisible(); }));
}

TEST_F(ScannerHelp, ControlsOfTheCameraByTapAndKey) {
    camera_.machine().controls = {{.control = CameraControl::torch},
                                  {.control = CameraControl::zoom, .value = 0.5, .step = 0.01}};
    camera_.machine().cameras = camerasNamed({"Fake camera", "Lid"});
    ShownScreen screen = show({{"offersControls", true}});
    EXPECT_FALSE(tap(screen, "torch")) << "no camera runs yet";
    camera_.makeReady();
    camera_.platform->session.lock()->tell();
    camera_.mainQueue->runAll();
    camera_.machine().log.clear();
    for (const char* name : {"torch", "zoomIn", "zoomOut", "cameraButton"})
        EXPECT_TRUE(tap(screen, name)) << name;
    QTest::keyClick(&screen.window(), Qt::Key_Plus);
    QTest::keyClick(&screen.window(), Qt::Key_Minus);
    camera_.pass();
    EXPECT_EQ(camera_.machine().log,
              (std::vector<std::string>{"torch 1.00", "zoom 0.60", "zoom 0.40", "replaceInput Lid",
                                        "zoom 0.60", "zoom 0.40"}));

    // A third one: a list, by keyboard alone.
    camera_.plug(camerasNamed({"Fake camera", "Lid", "Desk"}));
    for (int tabs = 0; tabs < 9 && QGuiApplication::focusObject(); ++tabs) {
        QTest::keyClick(&screen.window(), Qt::Key_Tab);
        if (screen.window().activeFocusItem() == findItem(screen.item("cameraButton"), "area"))
            break;
    }
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(&screen.window(), key);
        settle();
    };
    press(Qt::Key_Space);
    EXPECT_EQ(screen.window().activeFocusItem()->objectName(), "camera Lid") << "the present one";
    press(Qt::Key_Escape);
    EXPECT_EQ(screen.item("cameraList"), nullptr);
    EXPECT_EQ(closings_, 0);
    press(Qt::Key_Space);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    camera_.pass();
    EXPECT_EQ(camera_.machine().log.back(), "replaceInput Desk");
    EXPECT_EQ(screen.item("cameraList"), nullptr);
}

TEST_F(ScannerHelp, PicturesFromElsewhereGoToTheHostAsPhotosDo) {
    const QTemporaryDir folder;
    const auto picture = [&](int width) {
        const QString path = folder.filePath(QString::number(width) + ".png");
        QImage image(width, 10, QImage::Format_RGB32);
        image.fill(Qt::red);
        EXPECT_TRUE(image.save(path));
        return QUrl::fromLocalFile(path);
    };
    QFile text(folder.filePath("text.png"));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("This is no picture at all.");
    text.close();

    ShownScreen screen = show({{"importsPhotos", true}});
    QQuickItem* import = screen.item("photoImport");
    const auto drop = [&](const QMimeData& data) {
        QDragEnterEvent enter({50, 50}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&screen.window(), &enter);
        QDropEvent dropped({50, 50}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&screen.window(), &dropped);
        EXPECT_EQ(dropped.dropAction(), Qt::CopyAction) << "the file would be moved away";
    };
    const auto dropFile = [&](const QUrl& url) {
        QMimeData data;
        data.setUrls({url});
        drop(data);
    };
    const auto ends = [&](const std::string& expected) {
        EXPECT_TRUE(waitFor([&] { return !import->property("isBusy").toBool(); }));
        settle();
        EXPECT_EQ(std::exchange(got_, ""), expected);
    };
    dropFile(picture(21));
    dropFile(picture(22));
    EXPECT_EQ(textOf(screen, "guidance"), "Opening the picture…");
    ends("22;");

    QByteArray png;
    QBuffer buffer(&png);
    QImage pixels(23, 5, QImage::Format_ARGB32);
    pixels.fill(Qt::transparent);
    pixels.save(&buffer, "PNG");
    auto* copied = new QMimeData;
    copied->setData("image/png", png);
    QGuiApplication::clipboard()->setMimeData(copied);
    QTest::keyClick(&screen.window(), Qt::Key_V, Qt::ControlModifier);
    ends("23;");
    QMimeData fromProgram;
    fromProgram.setImageData(pixels.scaled(24, 5));
    drop(fromProgram);
    ends("24;");

    dropFile(QUrl::fromLocalFile(text.fileName()));
    ends("");
    EXPECT_EQ(textOf(screen, "guidance"), "That file is not a picture");
    dropFile(QUrl("https://example.org/page.jpg"));
    EXPECT_EQ(textOf(screen, "guidance"), "That is not a file on this device");

    dropFile(picture(26));
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, {});
    QCoreApplication::sendEvent(&screen.window(), &escape);  // no other event before it
    ends("");
    EXPECT_EQ(closings_, 0);
    ASSERT_TRUE(tap(screen, "importButton"));
    QPointer<QFileDialog> dialog;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "pictureDialog")
            dialog = qobject_cast<QFileDialog*>(window);
    }
    ASSERT_TRUE(dialog);
    EXPECT_FALSE(dialog->isModal());
    emit dialog->fileSelected(picture(25).toLocalFile());
    ends("25;");

    dropFile(picture(27));
    screen.release();
    EXPECT_FALSE(dialog) << "the dialog outlives its screen";
    QTest::qWait(50);
    EXPECT_EQ(got_, "");
}

// Whatever the size, the direction and the size of texts: a picture, and controls that can be hit.
TEST_F(ScannerHelp, FitsEverySize) {
    camera_.machine().controls = {{.control = CameraControl::torch},
                                  {.control = CameraControl::zoom, .value = 0.5}};
    camera_.machine().cameras = camerasNamed({"Fake camera", "Lid"});
    for (const QSize size : {QSize(240, 320), QSize(320, 240), QSize(320, 480), QSize(390, 760),
                             QSize(820, 390), QSize(1280, 720), QSize(3840, 2160)}) {
        for (const double textScale : {1.0, 2.0}) {
            for (const bool isMirrored : {false, true}) {
                SCOPED_TRACE(std::to_string(size.width()) + "x" + std::to_string(size.height()) +
                             (textScale > 1 ? " large" : "") + (isMirrored ? " mirrored" : ""));
                QGuiApplication::setLayoutDirection(isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
                ShownScreen screen = show({{"assistance", true},
                                           {"adaptsToSize", true},
                                           {"showsWholeFrame", true},
                                           {"textScale", textScale}},
                                          size);
                camera_.makeReady();
                camera_.platform->session.lock()->tell();
                camera_.mainQueue->runAll();
                camera_.surface()->show(blackFrame(64, 36), Orientation::up, false);
                screen.grab();
                settle();
                const QRectF frame = screen.rect("frame");
                EXPECT_NEAR(frame.width() / frame.height(), 16.0 / 9.0, 0.12);
                EXPECT_GE(frame.width(), 0.38 * std::min(size.width(), 900));
                std::vector<QRectF> controls{frame};
                for (const char* name : {"captureArea", "importButton", "torch", "cameraButton",
                                         "zoomIn", "zoomOut"}) {
                    QQuickItem* item = screen.item(name);
                    ASSERT_TRUE(item) << name;
                    if (!item->isVisible() && std::string(name).starts_with("zoom"))
                        continue;  // for want of room: keys and fingers do it too
                    const QRectF rect = sceneRect(*item);
                    EXPECT_TRUE(item->isVisible() && QRectF({}, size).contains(rect)) << name;
                    EXPECT_GE(rect.width(), 44.0) << name;
                    for (const QRectF& other : controls)
                        EXPECT_FALSE(rect.intersects(other)) << name;
                    controls.push_back(rect);
                }
            }
        }
    }
}

}  // namespace
}  // namespace kestrelid::test
