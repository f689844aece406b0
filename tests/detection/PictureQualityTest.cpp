#include "detection/PictureQualityStage.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

namespace kestrelid::detection {
namespace {

// A grey picture; behind each row stand pixels that do not belong to it.
Bitmap drawn(int width, int height, const std::function<int(int x, int y)>& value) {
    constexpr int kBehind = 20;
    const int stride = width + kBehind;
    const auto size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < stride; ++x)
            pixels[y * stride + x] = static_cast<std::byte>(x < width ? value(x, y) : 255);
    return *Bitmap::wrap(width, height, stride, PixelFormat::gray8, pixels, size);
}

TEST(PictureQuality, IsThatOfSharesOfThePixelsAndOfTheirChanges) {
    // Back and forth between 55 and 255 in steps of 40.
    const auto wave = [](int x, int) { return 55 + 40 * (x % 10 < 5 ? x % 10 : 10 - x % 10); };
    const auto falling = [](int x, int) { return 100 - 50 * (x % 3); };
    // The one darkest and the one brightest of 199 count, since half a percent is less than one.
    const auto two = [](int x, int) { return x == 50 ? 50 : x == 150 ? 150 : 100; };
    // Four spots of 1000 are no contrast, but the eight changes at them are changes.
    const auto spots = [](int x, int) { return x % 250 == 100 ? 255 : 100 + x % 3; };
    const struct {
        int width;
        std::function<int(int, int)> value;
        double brightness;
        double sharpness;
        double clipped;
    } rows[] = {{100, [&](int x, int y) { return wave(x + 5, y); }, 155.0, 0.2, 0.1},
                {99, falling, 50.0, 1.0, 0.0},
                {199, two, 100.0, 0.5, 0.0},
                {1000, spots, 101.0 + (616.0 - 1.0) / 1000, 1.0, 0.004},
                {1, [](int, int) { return 255; }, 255.0, 0.0, 1.0},
                {50, [](int x, int) { return 7 + x % 2; }, 7.5, 1.0, 0.0}};
    for (const auto& row : rows) {
        const PictureQuality quality = pictureQuality(drawn(row.width, 1, row.value), nullptr);
        EXPECT_NEAR(quality.brightness, row.brightness / 255.0, 1e-12) << row.width;
        EXPECT_DOUBLE_EQ(quality.sharpness, row.sharpness) << row.width;
        EXPECT_DOUBLE_EQ(quality.clippedHighlights, row.clipped) << row.width;
    }
}

// The weights of ITU-R BT.601: 127.499 and 140.5 of 255.
TEST(PictureQuality, SeesColoursAsGrey) {
    for (const PixelFormat format : {PixelFormat::rgb8, PixelFormat::bgra8}) {
        const std::shared_ptr<std::byte[]> pixels(new std::byte[16]);
        const int size = bytesPerPixel(format);
        int sum = 0;
        for (const auto& [red, green, blue] : {std::array{73, 174, 31}, std::array{17, 207, 122}}) {
            const bool isBlueFirst = format == PixelFormat::bgra8;
            const int channels[] = {isBlueFirst ? blue : red, green, isBlueFirst ? red : blue, 255};
            std::ranges::transform(channels, pixels.get() + sum * size,
                                   [](int value) { return static_cast<std::byte>(value); });
            ++sum;
        }
        const Bitmap bitmap = *Bitmap::wrap(2, 1, 2 * size, format, pixels, 2 * size);
        EXPECT_NEAR(pictureQuality(bitmap, nullptr).brightness * 2 * 255, 127 + 141, 1e-9);
    }
}

// A pixel counts if the right end of its middle line lies inside.
TEST(PictureQuality, IsThatOfTheInsideOfTheOutline) {
    const std::array<NormalizedPoint, 4> outlines[] = {
        {{{0.53, 0.99}, {0.93, 0.52}, {0.47, 0.02}, {0.08, 0.45}}},
        {{{0.5, 1.0}, {1.3, 1.0}, {1.3, 0.0}, {0.5, 0.0}}},
        {{{0.1, 1.0}, {0.5, 1.0}, {0.91, 0.0}, {0.47, 0.0}}}};
    for (const auto& corners : outlines) {
        constexpr int kSide = 100;
        double sum = 0.0;
        double count = 0.0;
        const Bitmap bitmap = drawn(kSide, kSide, [&](int x, int y) {
            const int value = (x * 37 + y * 101) % 251;
            const double right = (x + 1.0) / kSide;
            const double up = 1.0 - (y + 0.5) / kSide;
            for (std::size_t index = 0; index < 4; ++index) {
                const NormalizedPoint& a = corners[index];
                const NormalizedPoint& b = corners[(index + 1) % 4];
                if ((b.x - a.x) * (up - a.y) >= (b.y - a.y) * (right - a.x))
                    return value;
            }
            sum += value;
            ++count;
            return value;
        });
        const RectangleObservation outline{.boundingBox = {}, .corners = {corners}};
        EXPECT_NEAR(pictureQuality(bitmap, &outline).brightness, sum / count / 255.0, 1e-12);
    }
}

TEST(PictureQuality, LooksAtEverySecondRowOfALargePicture) {
    const auto value = [](int, int y) { return y % 4 == 0 ? 255 : y % 4 == 2 ? 55 : 0; };
    EXPECT_DOUBLE_EQ(pictureQuality(drawn(1000, 1000, value), nullptr).brightness, 155.0 / 255.0);
}

}  // namespace
}  // namespace kestrelid::detection
