#include "scanner/ScannerDisplay.h"
#include "tests/screens/FakeCamera.h"
#include "tests/screens/ScanRig.h"
#include "tests/screens/ShownScreen.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <QDir>
#include <QFontInfo>
#include <QGuiApplication>

namespace kestrelid::test {
namespace {

// Another minor version of Qt sets text and smooths edges in its own way.
constexpr auto kReferenceQt = "6.4.";

constexpr int kTolerance = 2;  // of a channel: rounding differs between processors

bool differ(QRgb a, QRgb b) {
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b))}) > kTolerance;
}

struct Case {
    std::string name;
    scanner::ScannerState state = {};
    QSize picture = {};  // in the preview
    QString title = "Front page";
    Orientation orientation = Orientation::up;
    bool isMirrored = false;
    QSize size{360, 640};
    double textScale = 1.0;
    bool adapts = false;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

class Pixels : public testing::Test {
protected:
    void SetUp() override {
        if (!QString(qVersion()).startsWith(kReferenceQt))
            GTEST_SKIP() << "the references were drawn by Qt 6.4, this is " << qVersion();
        if (QFontInfo(QGuiApplication::font()).family() != "DejaVu Sans")
            GTEST_SKIP() << "the font DejaVu Sans is missing: install fonts-dejavu-core";
    }
    void TearDown() override { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }

    // Compares what is shown with references/NAME.png, or writes that where the program was told to
    // --renew.
    static void expectReference(const QImage& grabbed, const std::string& name) {
        const auto file = QString::fromStdString(name);
        const QString path = QStringLiteral(KESTRELID_REFERENCES "/%1.png").arg(file);
        const QImage shown = grabbed.convertToFormat(QImage::Format_RGB32);
        if (QGuiApplication::arguments().contains("--renew")) {
            EXPECT_TRUE(shown.save(path, "PNG", 0)) << "cannot write " << path.toStdString();
            return;
        }
        const QImage reference(path);
        ASSERT_EQ(shown.size(), reference.size()) << path.toStdString();
        QImage difference =
            shown.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_RGB32);
        int differing = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                if (differ(shown.pixel(x, y), reference.pixel(x, y))) {
                    ++differing;
                    difference.setPixel(x, y, qRgb(255, 0, 0));
                }
            }
        }
        if (differing == 0)
            return;
        const QDir folder(QStringLiteral(KESTRELID_DIFFERENCES));
        folder.mkpath(".");
        shown.save(folder.filePath(file + ".actual.png"));
        difference.save(folder.filePath(file + ".difference.png"));
        ADD_FAILURE() << differing << " pixels differ from " << path.toStdString() << "; see "
                      << folder.filePath(file).toStdString() << ".actual.png and .difference.png";
    }
};

// A picture with an upper left corner: red there, and a field of stripes that fade to the right.
Bitmap drawnFrame(int width, int height) {
    const auto size = std::size_t{4} * static_cast<std::size_t>(width * height);
    const auto pixels = std::make_shared<std::byte[]>(size);
    auto* to = reinterpret_cast<QRgb*>(pixels.get());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool isMark = x < width / 4 && y < height / 4;
            *to++ =
                isMark ? qRgb(200, 0, 0) : qRgb(60, y / 16 % 2 == 0 ? 90 : 160, 255 * x / width);
        }
    }
    return *Bitmap::wrap(width, height, std::ptrdiff_t{4} * width, PixelFormat::bgra8, pixels,
                         size);
}

TEST_F(Pixels, OfTheScanner) {
    constexpr scanner::ScannerState denied{};
    constexpr scanner::ScannerState ready{.isAuthorized = true, .isSessionReady = true};
    constexpr scanner::ScannerState detected{true, true, true};
    for (const Case& row : std::vector<Case>{
             {"access-required", denied},
             {"not-ready", {.isAuthorized = true}},
             {"ready", ready},
             {"detected", detected},
             {.name = "turned-then-mirrored",
             .state = ready,
             .orientation = Orientation::right,
             .isMirrored = true},
             {.name = "small", .state = detected, .size = {320, 480}},
             {.name = "wide", .state = detected, .size = {720, 480}},
             {.name = "right-to-left", .state = denied, .direction = Qt::RightToLeft},
             {.name = "large-text", .state = denied, .textScale = 2.5},
         }) {
        const FakeCamera camera;
        if (!row.state.isAuthorized)
            *camera.authorization = FakeAuthorization(AuthorizationStatus::denied);
        QGuiApplication::setLayoutDirection(row.direction);
        ShownScreen screen("DocumentScannerView",
                           {{"completion", {}}, {"textScale", row.textScale}}, row.size,
                           camera.scannerCamera());
        camera.mainQueue->runAll();
        settle();
        if (row.state.isSessionReady)
            camera.makeReady();
        if (row.state.isDocumentDetected)
            camera.judge(true);
        settle();
        if (const auto surface = camera.surface())
            surface->show(drawnFrame(320, 240), row.orientation, row.isMirrored);
        expectReference(screen.grab(), "scanner-" + row.name);
    }
}

TEST_F(Pixels, OfTheScannerThatHelps) {
    struct HelpCase {
        std::string name;
        QSize size;
        bool isWhole = false;
        bool isAbsent = false;
        Qt::LayoutDirection direction = Qt::LeftToRight;
    };
    for (const HelpCase& row : std::vector<HelpCase>{
             {"help-outline", {390, 760}},
             {.name = "help-compact", .size = {820, 390}, .direction = Qt::RightToLeft},
             {.name = "help-whole", .size = {1280, 720}, .isWhole = true},
             {.name = "help-no-camera", .size = {390, 760}, .isAbsent = true},
         }) {
        const FakeCamera camera;
        camera.machine().hasDevice = !row.isAbsent;
        camera.machine().controls = {{.control = CameraControl::torch, .value = 1.0},
                                     {.control = CameraControl::zoom}};
        camera.machine().cameras = {{.name = "Fake camera", .formats = {}},
                                    {.name = "Lid", .formats = {}}};
        QGuiApplication::setLayoutDirection(row.direction);
        ShownScreen screen("DocumentScannerView",
                           {{"completion", {}},
                            {"assistance", true},
                            {"adaptsToSize", true},
                            {"showsWholeFrame", row.isWhole}},
                           row.size, camera.scannerCamera());
        camera.makeReady();
        if (!row.isAbsent) {
            camera.platform->session.lock()->tell();
            camera.surface()->show(drawnFrame(320, 180), Orientation::up, false);
            screen.grab();
            settle();
            camera.judge(row.isWhole);
            camera.showPage(pageAt(0.4, 0.3, 0.6, 0.7), 12);
            const QQuickItem* outline = screen.item("pageOutline");
            ASSERT_TRUE(waitFor([&] { return outline->opacity() > 0.8999; })) << row.name;
        }
        expectReference(screen.grab(), "scanner-" + row.name);
    }
}

TEST_F(Pixels, OfThePreview) {
    const QString longTitle = "A title that is much too long for one line of any telephone";
    constexpr QSize picture{400, 300};
    for (const Case& row : std::vector<Case>{
             {.name = "wide", .picture = {600, 200}},
             {.name = "tall", .picture = {200, 600}},
             {.name = "absent"},
             {.name = "long-title", .picture = picture, .title = longTitle},
             {.name = "title-as-it-stands", .picture = picture, .title = "<b>1 &lt; 2</b>"},
             {.name = "turned", .picture = picture, .orientation = Orientation::right},
             {.name = "broad", .picture = picture, .size = {720, 480}},
             {.name = "right-to-left", .picture = picture, .direction = Qt::RightToLeft},
             {.name = "large-text", .title = longTitle, .textScale = 2.5},
             {.name = "low", .picture = picture, .size = {640, 320}, .adapts = true},
             {.name = "watch", .picture = picture, .size = {240, 320}, .adapts = true},
         }) {
        QVariantMap properties{{"title", row.title},
                               {"didTapRetake", {}},
                               {"didTapConfirm", {}},
                               {"adaptsToSize", row.adapts},
                               {"textScale", row.textScale}};
        if (!row.picture.isEmpty())
            properties["image"] = QVariant::fromValue(
                Image(drawnFrame(row.picture.width(), row.picture.height()), row.orientation));
        QGuiApplication::setLayoutDirection(row.direction);
        ShownScreen screen("ImagePreviewView", properties, row.size);
        const QQuickItem* photo = screen.item("photo");
        ASSERT_TRUE(waitFor([&] { return photo->property("isComplete").toBool(); })) << row.name;
        expectReference(screen.grab(), "preview-" + row.name);
    }
}

TEST_F(Pixels, OfSharedParts) {
    QQmlEngine engine;
    const auto window = showHost(engine, R"(
        ScreenItem {
            id: root
            anchors.fill: parent
            Repeater {
                model: ["light", "dark"]
                Rectangle {
                    id: half
                    required property int index
                    required property string modelData
                    y: index * 320; width: 360; height: 320
                    color: theme.background
                    property Theme theme: Theme { choice: half.modelData }
                    Grid {
                        x: 12; y: 12; columns: 6; spacing: 12
                        Repeater {
                            model: ["torch", "switchCamera", "picture", "plus", "minus", "again",
                                    "warning", "check", "cross", "camera", "back", "details"]
                            IconButton {
                                required property string modelData
                                required property int index
                                screen: root; symbol: modelData; name: modelData
                                isDark: half.theme.isDark; isChecked: index % 5 === 1
                            }
                        }
                    }
                    Column {
                        x: 12; y: 130; spacing: 8
                        ActionButton { screen: root; theme: half.theme; text: "Use this photo" }
                        ActionButton {
                            width: 200
                            screen: root; theme: half.theme; isPrimary: false; textScale: 1.5
                            text: "Too long a text for a single line"
                        }
                    }
                }
            }
        })");
    expectReference(window->grabWindow(), "shared-parts");
}

TEST_F(Pixels, OfThePassportScan) {
    constexpr QSize phone{390, 760};
    constexpr QSize low{820, 390};
    struct ScanCase {
        const char* name;
        QSize size;
        const char* theme = "light";
        Qt::LayoutDirection direction = Qt::LeftToRight;
        bool isPassport = true;
        bool isTaken = true;
        double textScale = 1.0;
    };
    for (const ScanCase& row : std::vector<ScanCase>{
             {"passport", phone},
             {"passport-dark", phone, "dark"},
             {"passport-low", low, "dark"},
             {"passport-right-to-left", phone, "light", Qt::RightToLeft},
             {.name = "passport-small", .size = {320, 480}, .textScale = 1.5},
             {.name = "other", .size = phone, .isPassport = false},
             {.name = "other-dark", .size = phone, .theme = "dark", .isPassport = false},
             {"other-low-right-to-left", low, "light", Qt::RightToLeft, false},
             {.name = "failed", .size = phone, .isTaken = false},
         }) {
        ScanRig rig;
        if (!row.isPassport) {
            *rig.text = FakeText(std::vector<std::string>{"RECEIPT"});
            rig.zones->seen.clear();
        }
        QGuiApplication::setLayoutDirection(row.direction);
        ShownScreen screen("PassportScan",
                           {{"completion", {}}, {"theme", row.theme}, {"textScale", row.textScale}},
                           row.size, rig.scannerCamera());
        if (row.isTaken)
            rig.scan(screen);
        else
            rig.takePhoto(screen, false);
        const QQuickItem* photo = screen.item("photo");
        ASSERT_TRUE(!row.isTaken ||
                    waitFor([&] { return photo->property("isComplete").toBool(); }));
        expectReference(screen.grab(), std::string("scan-") + row.name);
    }
}

}  // namespace
}  // namespace kestrelid::test
