#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/screens/ShownScreen.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <QColor>
#include <QQuickWidget>
#include <QTest>
#include <string>

namespace kestrelid::test {
namespace {

constexpr int kOpenings = 50;
constexpr int kWarmUp = 10;  // openings until caches are full
const QSize kSize{360, 640};

// KiB that later openings may keep; one frame is 3600. The address sanitizer keeps what is freed.
#if defined(__SANITIZE_ADDRESS__)
constexpr long kGrowth = std::numeric_limits<long>::max();
#else
constexpr long kGrowth = 32 * 1024;
#endif

// A real camera session; recognition that finds nothing.
ScannerCamera scannerCamera() {
    ScannerCamera camera;
    camera.recognition = PlatformServices{
        .rectangles = std::make_shared<FakeRectangles>(),
        .text = std::make_shared<FakeText>(),
        .queue = makeSerialQueue("recognition"),
        .console = [](std::string_view) {},
    };
    return camera;
}

// A screen that is shown; gone with the last owner.
struct Opened {
    std::shared_ptr<void> screen;
    QQuickItem* root;
};

template <typename Controller, typename... Arguments>
Opened openController(Arguments... arguments) {
    const auto controller = std::make_shared<Controller>(std::move(arguments)...);
    controller->resize(kSize);
    controller->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(controller.get()));
    return {controller, controller->template findChild<QQuickWidget*>()->rootObject()};
}

Opened openView(const char* type, const QVariantMap& properties, const ScannerCamera& camera = {}) {
    const auto screen = std::make_shared<ShownScreen>(type, properties, kSize, camera);
    return {screen, screen->root()};
}

// Opens and closes again and again; later openings may add nothing to what this process holds.
void repeat(const std::function<Opened()>& open, const std::function<bool()>& isGone) {
    int threads = 0;
    int descriptors = 0;
    long memory = 0;
    for (int opening = 1; opening <= kOpenings; ++opening) {
        open().screen.reset();
        ASSERT_TRUE(waitFor(isGone)) << opening;
        if (opening == kWarmUp) {
            threads = threadCount();
            descriptors = descriptorCount();
            memory = residentKilobytes();
        }
    }
    EXPECT_TRUE(waitFor([&] { return threadCount() <= threads; }))
        << threadCount() << " > " << threads;
    EXPECT_LE(descriptorCount(), descriptors);
    EXPECT_LT(residentKilobytes() - memory, kGrowth) << "KiB";
}

// GetParam(): the widget, or the QML type.
class Openings : public testing::TestWithParam<bool> {};

TEST_P(Openings, OfTheScannerKeepNothingAndLetTheCameraGo) {
    const TestCamera hardware;
    const ScannerCamera camera = scannerCamera();
    const auto open = [&] {
        const PhotoCompletion completion = [](const std::optional<Image>&) {};
        const Opened opened =
            GetParam() ? openController<DocumentScannerVC>(completion, camera)
                       : openView("DocumentScannerView", {{"completion", QVariant()}}, camera);
        // Before it is ready, the block that will publish so holds the camera for up to a second.
        const QQuickItem* disc = findItem(opened.root, "disc");
        EXPECT_TRUE(waitFor([&] { return disc->property("color").value<QColor>() == Qt::white; }));
        return opened;
    };
    repeat(open, [&] { return !hardware.isOpen(); });
}

TEST_P(Openings, OfThePreviewKeepNothing) {
    constexpr int kWidth = 1600;
    constexpr int kHeight = 1200;
    constexpr std::size_t kBytes = std::size_t{3} * kWidth * kHeight;
    std::weak_ptr<std::byte[]> kept;
    const auto open = [&] {
        auto pixels = std::make_shared<std::byte[]>(kBytes);
        kept = pixels;
        const Image photo(*Bitmap::wrap(kWidth, kHeight, 3 * kWidth, PixelFormat::rgb8,
                                        std::move(pixels), kBytes));
        const Opened opened =
            GetParam() ? openController<ImagePreviewViewController>(
                             QString("Front page"), std::optional(photo), ScreenAction([] {}),
                             ScreenAction([] {}))
                       : openView("ImagePreviewView", {{"title", "Front page"},
                                                       {"image", QVariant::fromValue(photo)},
                                                       {"didTapRetake", QVariant()},
                                                       {"didTapConfirm", QVariant()}});
        const QQuickItem* shown = findItem(opened.root, "photo");
        EXPECT_TRUE(waitFor([&] { return shown->property("isComplete").toBool(); }));
        return opened;
    };
    repeat(open, [&] { return kept.expired(); });
}

INSTANTIATE_TEST_SUITE_P(Each, Openings, testing::Bool(), [](const auto& row) {
    return std::string(row.param ? "controller" : "view");
});

}  // namespace
}  // namespace kestrelid::test
