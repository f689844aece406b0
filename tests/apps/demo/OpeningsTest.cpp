#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/screens/ShownScreen.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/screens/DocumentScannerVC.h>

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <QColor>
#include <QQuickWidget>
#include <QTest>

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

// Opens and closes again and again; later openings may add nothing to what this process holds.
void repeat(const std::function<std::shared_ptr<void>()>& open,
            const std::function<bool()>& isGone) {
    int threads = 0;
    int descriptors = 0;
    long memory = 0;
    for (int opening = 1; opening <= kOpenings; ++opening) {
        open().reset();
        ASSERT_TRUE(waitFor(isGone)) << opening;
        if (opening == kWarmUp) {
            threads = threadCount();
            descriptors = descriptorCount();
            memory = residentKilobytes();
        }
    }
    EXPECT_TRUE(waitFor([&] { return threadCount() <= threads; }))
        << threadCount() << " > " << threads;
    EXPECT_TRUE(waitFor([&] { return descriptorCount() <= descriptors; }))
        << descriptorCount() << " > " << descriptors;
    EXPECT_LT(residentKilobytes() - memory, kGrowth) << "KiB";
}

TEST(Openings, OfTheScannersWidgetKeepNothingAndLetTheCameraGo) {
    const TestCamera hardware;
    ScannerCamera camera;  // a real session, and recognition that finds nothing
    camera.recognition = PlatformServices{.rectangles = std::make_shared<FakeRectangles>(),
                                          .text = std::make_shared<FakeText>(),
                                          .queue = makeSerialQueue("recognition"),
                                          .console = [](std::string_view) {}};
    const auto open = [&] {
        const auto controller = std::make_shared<DocumentScannerVC>([](auto&) {}, camera);
        controller->resize(kSize);
        controller->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(controller.get(), kPatience));
        // Before it is ready, the block that will publish so holds the camera for up to a second.
        const QQuickItem* disc =
            findItem(controller->findChild<QQuickWidget*>()->rootObject(), "disc");
        EXPECT_TRUE(waitFor([&] { return disc->property("color").value<QColor>() == Qt::white; }));
        return controller;
    };
    repeat(open, [&] { return !hardware.isOpen(); });
}

TEST(Openings, OfThePreviewsItemKeepNothing) {
    constexpr int kWidth = 1600;
    constexpr int kHeight = 1200;
    constexpr std::size_t kBytes = std::size_t{3} * kWidth * kHeight;
    std::weak_ptr<std::byte[]> kept;
    const auto open = [&] {
        auto pixels = std::make_shared<std::byte[]>(kBytes);
        kept = pixels;
        const Image photo(*Bitmap::wrap(kWidth, kHeight, 3 * kWidth, PixelFormat::rgb8,
                                        std::move(pixels), kBytes));
        const QVariantMap properties{{"title", "Front page"},
                                     {"image", QVariant::fromValue(photo)},
                                     {"didTapRetake", {}},
                                     {"didTapConfirm", {}}};
        const auto screen = std::make_shared<ShownScreen>("ImagePreviewView", properties, kSize);
        const QQuickItem* shown = screen->item("photo");
        EXPECT_TRUE(waitFor([&] { return shown->property("isComplete").toBool(); }));
        return screen;
    };
    repeat(open, [&] { return kept.expired(); });
}

}  // namespace
}  // namespace kestrelid::test
