#pragma once

#include <kestrelid/ImageFile.h>

#include <array>
#include <string>

namespace kestrelid::imagefile {

using Rgb = std::array<int, 3>;

// The picture that the tests encode: three by two blocks of
// one colour each. Blocks of 16 pixels survive lossy codecs.
inline constexpr int kBlock = 16;  // pixels
inline constexpr int kColumns = 3;
inline constexpr int kRows = 2;
inline constexpr std::array<Rgb, kColumns* kRows> kBlockColors = {
    {{200, 40, 40}, {40, 180, 60}, {40, 60, 200}, {250, 250, 250}, {10, 10, 10}, {220, 200, 40}}};

// Pixels of blocks of the given side, in RGB8.
[[nodiscard]] Bitmap blockPicture(int block = kBlock);

// Empty where the middle of every block of bitmap, a block picture of any size, has its colour
// within tolerance: laid on white with opacity (0..255), and as luma where the bitmap is Gray8.
[[nodiscard]] std::string differenceFromBlocks(const Bitmap& bitmap, int tolerance,
                                               int opacity = 255);

// Of RGB8.
[[nodiscard]] Rgb colorAt(const Bitmap& rgb, int x, int y);

// ITU-R BT.601
[[nodiscard]] int lumaOf(const Rgb& color);

// The result's image; fails the test and gives an empty image where it is an error.
[[nodiscard]] Image imageOf(const ImageResult& result);

// The result's cause; fails the test and gives nothing where
// it is an image, or the cause is not one printable line.
[[nodiscard]] std::string causeOf(const ImageResult& result);

}  // namespace kestrelid::imagefile
