#include "scanner/ScannerDisplay.h"
#include "tests/screens/FakeCamera.h"
#include "tests/screens/pixels/ReferencePicture.h"
#include "tests/screens/ShownScreen.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <QFont>
#include <QFontInfo>
#include <QGuiApplication>
#include <string>
#include <vector>

namespace kestrelid::test {
namespace {

// Another minor version of Qt sets text and smooths edges in its own way.
constexpr auto kReferenceQt = "6.4.";

class ScreenPixels : public testing::Test {
protected:
    void SetUp() override {
        if (!QString(qVersion()).startsWith(kReferenceQt))
            GTEST_SKIP() << "the references were drawn by Qt 6.4, this is " << qVersion();
        if (QFontInfo(QGuiApplication::font()).family() != "DejaVu Sans")
            GTEST_SKIP() << "the font DejaVu Sans is missing: install fonts-dejavu-core";
    }
    void TearDown() override { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
};

// A picture with an upper left corner: red there, and a field of stripes that fade to the right.
Bitmap drawnFrame(int width, int height) {
    const auto stride = static_cast<std::size_t>(width) * 4;
    const std::size_t size = stride * static_cast<std::size_t>(height);
    const auto pixels = std::make_shared<std::byte[]>(size);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::byte* to = pixels.get() + static_cast<std::size_t>(y) * stride +
                            static_cast<std::size_t>(x) * 4;
            const bool isMark = x < width / 4 && y < height / 4;
            to[0] = std::byte(isMark ? 0 : 255 * x / width);
            to[1] = std::byte(isMark ? 0 : y / 16 % 2 == 0 ? 90 : 160);
            to[2] = std::byte(isMark ? 200 : 60);
            to[3] = std::byte(255);
        }
    }
    return *Bitmap::wrap(width, height, static_cast<std::ptrdiff_t>(stride), PixelFormat::bgra8,
                         pixels, size);
}

template <typename Row>
std::string caseName(const testing::TestParamInfo<Row>& row) {
    return QString::fromStdString(row.param.name).replace('-', '_').toStdString();
}

struct ScannerCase {
    std::string name;
    scanner::ScannerState state;
    QSize size{360, 640};
    double textScale = 1.0;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    Orientation mounted = Orientation::up;
    bool isMirrored = false;
};

void PrintTo(const ScannerCase& row, std::ostream* out) {
    *out << row.name;
}

class ScannerPixels : public ScreenPixels, public testing::WithParamInterface<ScannerCase> {};

TEST_P(ScannerPixels, match) {
    const ScannerCase& row = GetParam();
    QGuiApplication::setLayoutDirection(row.direction);
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
    if (const auto session = camera.platform->session.lock()) {
        for (const auto& weak : session->surfaces) {
            if (const auto surface = weak.lock())
                surface->show(drawnFrame(320, 240), row.mounted, row.isMirrored);
        }
    }
    expectLooksLike(screen.grab(), "scanner-" + row.name);
    // Blocks that still wait hold the manager, which holds their queue.
    screen.release();
    camera.otherQueues->runAll();
    camera.mainQueue->advance(2.0);
}

constexpr scanner::ScannerState kDenied{};
constexpr scanner::ScannerState kNotReady{.isAuthorized = true};
constexpr scanner::ScannerState kReady{.isAuthorized = true, .isSessionReady = true};
constexpr scanner::ScannerState kDetected{
    .isAuthorized = true, .isSessionReady = true, .isDocumentDetected = true};

INSTANTIATE_TEST_SUITE_P(
    References, ScannerPixels,
    testing::Values(
        ScannerCase{"access-required", kDenied}, ScannerCase{"not-ready", kNotReady},
        ScannerCase{"ready", kReady}, ScannerCase{"detected", kDetected},
        ScannerCase{.name = "sensor-turned", .state = kReady, .mounted = Orientation::right},
        ScannerCase{.name = "mirrored", .state = kReady, .isMirrored = true},
        ScannerCase{.name = "small", .state = kDetected, .size = {320, 480}},
        ScannerCase{.name = "wide", .state = kDetected, .size = {720, 480}},
        ScannerCase{.name = "right-to-left", .state = kDenied, .direction = Qt::RightToLeft},
        ScannerCase{.name = "large-text", .state = kDenied, .textScale = 2.5}),
    caseName<ScannerCase>);

struct PreviewCase {
    std::string name;
    QSize picture;  // empty: none
    QString title = "Front page";
    QSize size{360, 640};
    double textScale = 1.0;
    Qt::LayoutDirection direction = Qt::LeftToRight;
    Orientation orientation = Orientation::up;
};

void PrintTo(const PreviewCase& row, std::ostream* out) {
    *out << row.name;
}

class PreviewPixels : public ScreenPixels, public testing::WithParamInterface<PreviewCase> {};

TEST_P(PreviewPixels, match) {
    const PreviewCase& row = GetParam();
    QGuiApplication::setLayoutDirection(row.direction);
    QVariantMap properties{{"title", row.title},
                           {"didTapRetake", {}},
                           {"didTapConfirm", {}},
                           {"textScale", row.textScale}};
    if (!row.picture.isEmpty())
        properties["image"] = QVariant::fromValue(
            Image(drawnFrame(row.picture.width(), row.picture.height()), row.orientation));
    ShownScreen screen("ImagePreviewView", properties, row.size);
    QQuickItem* photo = screen.item("photo");
    ASSERT_TRUE(waitFor([&] { return photo->property("isComplete").toBool(); }));
    expectLooksLike(screen.grab(), "preview-" + row.name);
}

const QString kLongTitle = "A title that is much too long for one line of any telephone";

INSTANTIATE_TEST_SUITE_P(
    References, PreviewPixels,
    testing::Values(
        PreviewCase{"wide", {600, 200}}, PreviewCase{"tall", {200, 600}}, PreviewCase{"absent", {}},
        PreviewCase{"empty-title", {400, 300}, ""},
        PreviewCase{"long-title", {400, 300}, kLongTitle},
        PreviewCase{"title-as-it-stands", {400, 300}, "<b>1 &lt; 2</b>"},
        PreviewCase{.name = "turned", .picture = {400, 300}, .orientation = Orientation::right},
        PreviewCase{.name = "small", .picture = {400, 300}, .size = {320, 480}},
        PreviewCase{.name = "broad", .picture = {400, 300}, .size = {720, 480}},
        PreviewCase{.name = "right-to-left", .picture = {400, 300}, .direction = Qt::RightToLeft},
        PreviewCase{.name = "large-text", .picture = {}, .title = kLongTitle, .textScale = 2.5}),
    caseName<PreviewCase>);

}  // namespace
}  // namespace kestrelid::test
