#include "vision/outlines/NetworkRectangleService.h"

#include "tests/support/TemporaryFolder.h"
#include "tests/vision/outlines/DrawnScenes.h"

#include <kestrelid/ImageFile.h>

#include <gmock/gmock.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kestrelid::vision {
namespace {

Bitmap flat(int width, int height, PixelFormat format = PixelFormat::gray8) {
    const std::size_t stride = static_cast<std::size_t>(width * bytesPerPixel(format));
    const std::size_t bytes = stride * static_cast<std::size_t>(height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[bytes]);
    std::fill_n(pixels.get(), bytes, std::byte{0x80});
    return *Bitmap::wrap(width, height, static_cast<int>(stride), format, pixels, bytes);
}

TEST(WithoutNetwork, requestsAndDiagnosisSayWhatIsMissing) {
    for (const bool isDamaged : {false, true}) {
        SCOPED_TRACE(isDamaged);
        const test::TemporaryFolder folder;
        if (isDamaged)
            std::ofstream(folder / "outline-net.onnx") << "no model";
        NetworkRectangleService service({folder.path(), KESTRELID_RESOURCES_DIR}, 2);
        const auto status = service.diagnose();
        EXPECT_FALSE(status.available);
        EXPECT_THAT(status.details, testing::EndsWith("; no outline is found"));
        const RectangleResult result = service.perform(flat(200, 100), {});
        ASSERT_TRUE(std::holds_alternative<RequestError>(result));
        const std::string& description = std::get<RequestError>(result).description;
        EXPECT_THAT(description, testing::HasSubstr(folder.path().string()));
        EXPECT_THAT(status.details, testing::StartsWith(description));
    }
}

class WithNetwork : public testing::Test {
protected:
    void SetUp() override {
        const ServiceStatus status = service_.diagnose();
        if (!status.available)
            GTEST_SKIP() << status.details;
    }

    std::vector<RectangleObservation> find(const Bitmap& bitmap,
                                           const RectangleRequest& request = {}) {
        return std::get<std::vector<RectangleObservation>>(service_.perform(bitmap, request));
    }

    NetworkRectangleService service_{{KESTRELID_RESOURCES_DIR, KESTRELID_SOURCE_DIR "/models"}, 2};
};

Bitmap sample(const std::string& name) {
    return *std::get<Image>(readImage(std::string(KESTRELID_SOURCE_DIR "/samples/") + name))
                .upright()
                .bitmap();
}

// Printed paper on a desk, a rectangle of 380 by 260 pixels for a high power, an ellipse for 2.
Bitmap paperOnDesk(double power) {
    constexpr int kWidth = 640;
    constexpr int kHeight = 480;
    const std::shared_ptr<std::byte[]> pixels(new std::byte[kWidth * kHeight]);
    unsigned noise = 1;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1664525u + 1013904223u;
            const double away = std::pow(std::abs(x - 330) / 190.0, power) +
                                std::pow(std::abs(y - 240) / 130.0, power);
            const bool print = away < 0.5 && y % 30 > 20;
            pixels[y * kWidth + x] =
                static_cast<std::byte>((away < 1.0 ? 180 : 100) - (print ? 60 : 0) + (noise >> 29));
        }
    return *Bitmap::wrap(kWidth, kHeight, kWidth, PixelFormat::gray8, pixels, kWidth * kHeight);
}

TEST_F(WithNetwork, cornersAreNamedAsSeenWhicheverWayThePageLies) {
    const cv::Size frame(960, 540);
    const Quad wide{cv::Point2f{214, 82}, {742, 128}, {704, 482}, {168, 430}};
    const Quad tall{cv::Point2f{340, 30}, {690, 44}, {672, 520}, {330, 500}};
    cv::Mat3b page = test::drawnPage();
    for (int turns = 0; turns < 4; ++turns, cv::rotate(page.clone(), page, cv::ROTATE_90_CLOCKWISE))
        for (const auto format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8}) {
            SCOPED_TRACE(testing::Message() << turns << " turns, " << bytesPerPixel(format));
            const Quad& quad = turns % 2 == 0 ? wide : tall;
            const cv::Mat3b scene = test::laidOn(test::grain(frame, 5), page, quad);
            const auto found = find(test::bitmapOf(scene, format));
            ASSERT_EQ(found.size(), 1u);
            for (std::size_t i = 0; i < 4; ++i) {
                const NormalizedPoint& corner = found.front().corners[i];
                EXPECT_NEAR(corner.x, double{quad[i].x} / frame.width, 0.02) << i;
                EXPECT_NEAR(corner.y, 1.0 - double{quad[i].y} / frame.height, 0.02) << i;
            }
        }
}

// What the closer look at its surroundings shows counts in pixels of these.
TEST_F(WithNetwork, aSmallPageIsPlacedWhereItLies) {
    const cv::Size frame(1280, 960);
    const cv::Mat3b desk = test::grain(frame, 3);
    for (const cv::Point2f at : {cv::Point2f(113, 97), {611, 420}, {1000, 740}}) {
        const Quad quad{at + cv::Point2f(0, 4), at + cv::Point2f(212, 0),
                        at + cv::Point2f(220, 149), at + cv::Point2f(5, 152)};
        const auto scene = test::laidOn(desk, test::drawnPage(), quad);
        const auto found = find(test::bitmapOf(scene, PixelFormat::rgb8));
        ASSERT_EQ(found.size(), 1u) << at;
        for (std::size_t i = 0; i < 4; ++i) {
            const NormalizedPoint& corner = found.front().corners[i];
            EXPECT_NEAR(corner.x, double{quad[i].x} / frame.width, 0.005) << at << i;
            EXPECT_NEAR(corner.y, 1.0 - double{quad[i].y} / frame.height, 0.005) << at << i;
        }
    }
}

TEST_F(WithNetwork, onePageGivesOneOutline) {
    for (const double power : {60.0, 20.0})
        EXPECT_EQ(find(paperOnDesk(power)).size(), 1u) << power;
    EXPECT_EQ(find(sample("bangladesh-on-wood.jpg")).size(), 1u);
}

TEST_F(WithNetwork, emptyPicturesGiveNothing) {
    for (const auto& [width, height] : {std::pair(640, 480), std::pair(1, 1), std::pair(3000, 20)})
        for (const PixelFormat format : {PixelFormat::gray8, PixelFormat::bgra8, PixelFormat::rgb8})
            EXPECT_TRUE(find(flat(width, height, format)).empty()) << width << "x" << height;
}

TEST_F(WithNetwork, limitsOfTheRequestHold) {
    const Bitmap page = sample("bangladesh-on-wood.jpg");
    EXPECT_TRUE(find(page, {.maximumObservations = 0}).empty());
    EXPECT_TRUE(find(page, {.minimumConfidence = 1.01f}).empty());
    EXPECT_TRUE(find(page, {.minimumAspectRatio = 3.0f, .maximumAspectRatio = 4.0f}).empty());
}

TEST_F(WithNetwork, threadsShareIt) {
    const Bitmap page = sample("bangladesh-on-wood.jpg");
    const auto expected = find(page);
    std::vector<std::size_t> counts(4);
    std::vector<std::thread> threads;
    for (std::size_t& count : counts)
        threads.emplace_back([&] { count = find(page).size(); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_THAT(counts, testing::Each(expected.size()));
}

}  // namespace
}  // namespace kestrelid::vision
