#pragma once

#include <kestrelid/ImageFile.h>

#include <array>
#include <string>

namespace kestrelid::imagefile {

using Rgb = std::array<int, 3>;

// The picture of data/: three by two blocks of one colour each, 48 by 32 pixels.
inline constexpr int kWidth = 48;
inline constexpr int kHeight = 32;
inline constexpr int kColumns = 3;
inline constexpr int kRows = 2;
inline constexpr std::array<Rgb, kColumns* kRows> kBlockColors = {
    {{200, 40, 40}, {40, 180, 60}, {40, 60, 200}, {250, 250, 250}, {10, 10, 10}, {220, 200, 40}}};

// Empty where the middle of every block of bitmap, a block picture of any size, has its colour
// within tolerance: laid on white with opacity (0..255), and as luma where the bitmap is Gray8.
[[nodiscard]] std::string differenceFromBlocks(const Bitmap& bitmap, int tolerance,
                                               int opacity = 255);

// ITU-R BT.601
[[nodiscard]] int lumaOf(const Rgb& color);

// The result's image; fails the test and gives an empty image where it is an error.
[[nodiscard]] Image imageOf(const ImageResult& result);

// The result's cause, one printable line; fails the test where it is an image.
[[nodiscard]] std::string causeOf(const ImageResult& result);

}  // namespace kestrelid::imagefile
