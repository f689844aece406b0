#include "scanner/ScannerDisplay.h"
#include "tests/screens/FakeCamera.h"
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
    Qt::LayoutDirection direction = Qt::LeftToRight;

    friend void PrintTo(const Case& row, std::ostream* out) { *out << row.name; }
};

class Pixels : public testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        if (!QString(qVersion()).startsWith(kReferenceQt))
            GTEST_SKIP() << "the references were drawn by Qt 6.4, this is " << qVersion();
        if (QFontInfo(QGuiApplication::font()).family() != "DejaVu Sans")
            GTEST_SKIP() << "the font DejaVu Sans is missing: install fonts-dejavu-core";
        QGuiApplication::setLayoutDirection(GetParam().direction);
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

constexpr auto kCaseName = [](const testing::TestParamInfo<Case>& row) {
    std::string name = row.param.name;
    std::ranges::replace(name, '-', '_');
    return name;
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

class ScannerPixels : public Pixels {};

TEST_P(ScannerPixels, match) {
    const Case& row = GetParam();
    const FakeCamera camera;
    if (!row.state.isAuthorized)
        *camera.authorization = FakeAuthorization(AuthorizationStatus::denied);
    ShownScreen screen("DocumentScannerView", {{"completion", {}}, {"textScale", row.textScale}},
                       row.size, camera.scannerCamera());
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

constexpr scanner::ScannerState kDenied{};
constexpr scanner::ScannerState kNotReady{.isAuthorized = true};
constexpr scanner::ScannerState kReady{.isAuthorized = true, .isSessionReady = true};
constexpr scanner::ScannerState kDetected{true, true, true};

INSTANTIATE_TEST_SUITE_P(
    References, ScannerPixels,
    testing::Values(Case{"access-required", kDenied}, Case{"not-ready", kNotReady},
                    Case{"ready", kReady}, Case{"detected", kDetected},
                    Case{.name = "turned-then-mirrored",
                         .state = kReady,
                         .orientation = Orientation::right,
                         .isMirrored = true},
                    Case{.name = "small", .state = kDetected, .size = {320, 480}},
                    Case{.name = "wide", .state = kDetected, .size = {720, 480}},
                    Case{.name = "right-to-left", .state = kDenied, .direction = Qt::RightToLeft},
                    Case{.name = "large-text", .state = kDenied, .textScale = 2.5}),
    kCaseName);

class PreviewPixels : public Pixels {};

TEST_P(PreviewPixels, match) {
    const Case& row = GetParam();
    QVariantMap properties{{"title", row.title},
                           {"didTapRetake", {}},
                           {"didTapConfirm", {}},
                           {"textScale", row.textScale}};
    if (!row.picture.isEmpty())
        properties["image"] = QVariant::fromValue(
            Image(drawnFrame(row.picture.width(), row.picture.height()), row.orientation));
    ShownScreen screen("ImagePreviewView", properties, row.size);
    const QQuickItem* photo = screen.item("photo");
    ASSERT_TRUE(waitFor([&] { return photo->property("isComplete").toBool(); }));
    expectReference(screen.grab(), "preview-" + row.name);
}

const QString kLongTitle = "A title that is much too long for one line of any telephone";
constexpr QSize kPicture{400, 300};

INSTANTIATE_TEST_SUITE_P(
    References, PreviewPixels,
    testing::Values(
        Case{.name = "wide", .picture = {600, 200}}, Case{.name = "tall", .picture = {200, 600}},
        Case{.name = "absent"},
        Case{.name = "long-title", .picture = kPicture, .title = kLongTitle},
        Case{.name = "title-as-it-stands", .picture = kPicture, .title = "<b>1 &lt; 2</b>"},
        Case{.name = "turned", .picture = kPicture, .orientation = Orientation::right},
        Case{.name = "broad", .picture = kPicture, .size = {720, 480}},
        Case{.name = "right-to-left", .picture = kPicture, .direction = Qt::RightToLeft},
        Case{.name = "large-text", .title = kLongTitle, .textScale = 2.5}),
    kCaseName);

}  // namespace
}  // namespace kestrelid::test
