#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/screens/ShownScreen.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <QColor>
#include <QQuickWidget>
#include <QTest>
#include <string>

namespace kestrelid::test {
namespace {

constexpr int kOpenings = 50;
constexpr int kWarmUp = 10;          // openings until caches are full
constexpr long kGrowth = 32 * 1024;  // KiB that later openings may keep; one frame is 3600
constexpr int kRelease = 1000;       // milliseconds until the camera is closed
const QSize kSize{360, 640};

// Whether memory is given back when it is freed: the address sanitizer keeps it for a while.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMeasuresMemory = false;
#else
constexpr bool kMeasuresMemory = true;
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

template <typename... Arguments>
struct Row {
    std::string name;
    std::function<Opened(const Arguments&...)> open;

    friend void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
};

constexpr auto kRowName = [](const auto& row) { return row.param.name; };

template <typename Controller>
Opened shown(std::shared_ptr<Controller> controller) {
    controller->resize(kSize);
    controller->show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(controller.get()));
    return {controller, controller->template findChild<QQuickWidget*>()->rootObject()};
}

Opened shown(std::shared_ptr<ShownScreen> screen) {
    return {screen, screen->root()};
}

Opened openScanner(const ScannerCamera& camera) {
    return shown(std::make_shared<ShownScreen>(
        "DocumentScannerView", QVariantMap{{"completion", QVariant()}}, kSize, camera));
}

Opened openScannerController(const ScannerCamera& camera) {
    return shown(std::make_shared<DocumentScannerVC>([](const std::optional<Image>&) {}, camera));
}

class ScannerOpenings : public testing::TestWithParam<Row<ScannerCamera>> {};

TEST_P(ScannerOpenings, keepNothingAndLetTheCameraGo) {
    const TestCamera hardware;
    const ScannerCamera camera = scannerCamera();
    int threads = 0;
    int descriptors = 0;
    long memory = 0;
    for (int opening = 1; opening <= kOpenings; ++opening) {
        Opened opened = GetParam().open(camera);
        // Before it is ready, the block that will publish so holds the camera for up to a second.
        const QQuickItem* disc = findItem(opened.root, "disc");
        ASSERT_TRUE(waitFor([&] { return disc->property("color").value<QColor>() == Qt::white; }));
        opened.screen.reset();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !hardware.isOpen(); }, kRelease)) << opening;
        if (opening == kWarmUp) {
            threads = threadCount();
            descriptors = descriptorCount();
            memory = residentKilobytes();
        }
    }
    EXPECT_TRUE(waitFor([&] { return threadCount() <= threads; }))
        << threadCount() << " > " << threads;
    EXPECT_LE(descriptorCount(), descriptors);
    EXPECT_TRUE(!kMeasuresMemory || residentKilobytes() - memory < kGrowth)
        << residentKilobytes() - memory << " KiB";
}

INSTANTIATE_TEST_SUITE_P(All, ScannerOpenings,
                         testing::Values(Row<ScannerCamera>{"view", openScanner},
                                         Row<ScannerCamera>{"controller", openScannerController}),
                         kRowName);

Opened openPreview(const Image& photo) {
    return shown(std::make_shared<ShownScreen>("ImagePreviewView",
                                               QVariantMap{{"title", "Front page"},
                                                           {"image", QVariant::fromValue(photo)},
                                                           {"didTapRetake", QVariant()},
                                                           {"didTapConfirm", QVariant()}},
                                               kSize));
}

Opened openPreviewController(const Image& photo) {
    return shown(std::make_shared<ImagePreviewViewController>(
        "Front page", photo, [] {}, [] {}));
}

class PreviewOpenings : public testing::TestWithParam<Row<Image>> {};

TEST_P(PreviewOpenings, keepNothing) {
    constexpr int kWidth = 1600;
    constexpr int kHeight = 1200;
    constexpr std::size_t kBytes = std::size_t{3} * kWidth * kHeight;
    int descriptors = 0;
    long memory = 0;
    for (int opening = 1; opening <= kOpenings; ++opening) {
        auto pixels = std::make_shared<std::byte[]>(kBytes);
        const std::weak_ptr<std::byte[]> photo = pixels;
        Opened opened = GetParam().open(Image(*Bitmap::wrap(
            kWidth, kHeight, 3 * kWidth, PixelFormat::rgb8, std::move(pixels), kBytes)));
        const QQuickItem* shown = findItem(opened.root, "photo");
        ASSERT_TRUE(waitFor([&] { return shown->property("isComplete").toBool(); }));
        opened.screen.reset();
        ASSERT_TRUE(waitFor([&] { return photo.expired(); })) << opening;
        if (opening == kWarmUp) {
            descriptors = descriptorCount();
            memory = residentKilobytes();
        }
    }
    EXPECT_LE(descriptorCount(), descriptors);
    EXPECT_TRUE(!kMeasuresMemory || residentKilobytes() - memory < kGrowth)
        << residentKilobytes() - memory << " KiB";
}

INSTANTIATE_TEST_SUITE_P(All, PreviewOpenings,
                         testing::Values(Row<Image>{"view", openPreview},
                                         Row<Image>{"controller", openPreviewController}),
                         kRowName);

}  // namespace
}  // namespace kestrelid::test
