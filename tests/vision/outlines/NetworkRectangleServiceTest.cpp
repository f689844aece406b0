#include "vision/outlines/NetworkRectangleService.h"

#include "tests/support/TemporaryFolder.h"

#include <kestrelid/ImageFile.h>

#include <gmock/gmock.h>

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

// Answers with what it was told to, and counts.
class OtherFinder final : public RectangleService {
public:
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
        ++calls;
        return answer;
    }

    int calls = 0;
    RectangleResult answer;
};

Bitmap flat(int width, int height, PixelFormat format = PixelFormat::gray8) {
    const std::size_t stride = static_cast<std::size_t>(width * bytesPerPixel(format));
    const std::size_t bytes = stride * static_cast<std::size_t>(height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[bytes]);
    std::fill_n(pixels.get(), bytes, std::byte{0x80});
    return *Bitmap::wrap(width, height, static_cast<int>(stride), format, pixels, bytes);
}

TEST(WithoutNetwork, theOtherFinderAnswersAloneAndDiagnosisSaysSo) {
    for (const bool isDamaged : {false, true}) {
        SCOPED_TRACE(isDamaged);
        const test::TemporaryFolder folder;
        if (isDamaged)
            std::ofstream(folder / "outline-net.onnx") << "no model";
        const auto other = std::make_shared<OtherFinder>();
        other->answer = std::vector{RectangleObservation{{0.1, 0.2, 0.5, 0.5}, {}, 0.7f}};
        NetworkRectangleService service({folder.path(), KESTRELID_RESOURCES_DIR}, other);
        const RectangleResult found = service.perform(flat(200, 100), {});
        EXPECT_EQ(std::get<std::vector<RectangleObservation>>(found).size(), 1u);

        other->answer = RequestError{"refused"};
        const RectangleResult refused = service.perform(flat(200, 100), {});
        EXPECT_EQ(std::get<RequestError>(refused).description, "refused");

        const auto status = service.diagnose();
        EXPECT_FALSE(status.available);
        EXPECT_THAT(status.details, testing::HasSubstr("classical finder alone"));
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

    std::shared_ptr<OtherFinder> other_ = std::make_shared<OtherFinder>();
    NetworkRectangleService service_{{KESTRELID_RESOURCES_DIR, KESTRELID_SOURCE_DIR "/models"},
                                     other_};
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

TEST_F(WithNetwork, theOtherFinderIsAskedOnlyInDoubt) {
    const RectangleObservation seen{{0.05, 0.05, 0.1, 0.1}, {}, 0.66f};
    other_->answer = std::vector{seen};
    EXPECT_FALSE(find(paperOnDesk(60.0)).empty());
    EXPECT_EQ(other_->calls, 0);
    EXPECT_TRUE(find(flat(640, 480)).empty());
    EXPECT_EQ(other_->calls, 0);
    // Between a page and an ellipse lies paper that leaves doubt.
    std::vector<RectangleObservation> found;
    for (double power = 8.0; power > 2.0 && other_->calls == 0; power -= 0.25)
        found = find(paperOnDesk(power));
    EXPECT_EQ(other_->calls, 1);
    EXPECT_THAT(found, testing::Contains(
                           testing::Field(&RectangleObservation::confidence, seen.confidence)));
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
