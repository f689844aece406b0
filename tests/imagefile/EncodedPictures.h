#pragma once

#include <kestrelid/Bitmap.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// Files as the codec libraries write them. All of them fail the test that asks for what a library
// refuses.
namespace kestrelid::imagefile {

using Bytes = std::vector<std::byte>;

// No EXIF block or TIFF tag at all where it is none; the number is written as it stands, valid or
// not.
using OrientationTag = std::optional<int>;

// Each codec has those that its format knows.
enum class Color { rgb, rgba, gray, grayAlpha, whiteIsZero, palette, ink, ycbcr };

struct JpegCase {
    Color color = Color::rgb;
    bool progressive = false;
    OrientationTag orientation = std::nullopt;
};
[[nodiscard]] Bytes encodeTestJpeg(const Bitmap& rgb, const JpegCase& options = {});

struct PngCase {
    Color color = Color::rgb;
    int bitDepth = 8;
    bool interlaced = false;
    int opacity = 255;  // 0..255, of every pixel; for palettes, by a tRNS chunk
    OrientationTag orientation = std::nullopt;
    std::size_t textBombs = 0;  // compressed text chunks that unpack to a megabyte each
};
[[nodiscard]] Bytes encodeTestPng(const Bitmap& rgb, const PngCase& options = {});

// The start of a PNG up to its first row.
[[nodiscard]] Bytes pngHeader(std::uint32_t width, std::uint32_t height);

struct WebPCase {
    bool lossless = false;
    int opacity = 255;
    OrientationTag orientation = std::nullopt;
    bool animated = false;  // one frame on a canvas twice as wide and high, in its lower right
};
[[nodiscard]] Bytes encodeTestWebP(const Bitmap& rgb, const WebPCase& options = {});

struct TiffCase {
    Color color = Color::rgb;
    int bits = 8;
    int compression = 1;  // TIFFTAG_COMPRESSION: none
    bool tiled = false;
    bool planes = false;
    bool bigEndian = false;
    int opacity = 255;
    OrientationTag orientation = std::nullopt;
};
[[nodiscard]] Bytes encodeTestTiff(const Bitmap& rgb, const TiffCase& options = {});

// blockPicture() in data/, because few machines have an HEVC encoder.
[[nodiscard]] Bytes committedHeic(const char* name = "blocks.heic");

}  // namespace kestrelid::imagefile
