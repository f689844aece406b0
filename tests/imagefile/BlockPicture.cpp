#include "tests/imagefile/BlockPicture.h"

#include "tests/imagefile/FileBytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace kestrelid::imagefile {

Bytes pictureFile(const char* name) {
    const std::string path = std::string(KESTRELID_SOURCE_DIR "/tests/imagefile/data/") + name;
    std::ifstream file(path, std::ios::binary);
    const std::string contents(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(contents.empty()) << path;
    return bytesOf(contents);
}

int lumaOf(const Rgb& color) {
    return static_cast<int>(std::lround(0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2]));
}

std::string differenceFromBlocks(const Bitmap& bitmap, int tolerance, int opacity) {
    std::string difference;
    for (int index = 0; index < kColumns * kRows; ++index) {
        const int x = (2 * (index % kColumns) + 1) * bitmap.width() / (2 * kColumns);
        const int y = (2 * (index / kColumns) + 1) * bitmap.height() / (2 * kRows);
        const Rgb& color = kBlockColors[static_cast<std::size_t>(index)];
        const std::byte* pixel = bitmap.row(y) + x * bytesPerPixel(bitmap.format());
        for (int channel = 0; channel < (bitmap.format() == PixelFormat::gray8 ? 1 : 3);
             ++channel) {
            const int opaque = bitmap.format() == PixelFormat::gray8
                                   ? lumaOf(color)
                                   : color[static_cast<std::size_t>(channel)];
            const int expected = 255 - (255 - opaque) * opacity / 255;
            const int found = std::to_integer<int>(pixel[channel]);
            if (std::abs(found - expected) > tolerance) {
                difference += "block " + std::to_string(index) + " channel " +
                              std::to_string(channel) + " is " + std::to_string(found) + ", not " +
                              std::to_string(expected) + "; ";
            }
        }
    }
    return difference;
}

Image imageOf(const ImageResult& result) {
    if (const auto* error = std::get_if<ImageError>(&result)) {
        ADD_FAILURE() << "not decoded: " << error->cause;
        return {};
    }
    EXPECT_TRUE(std::get<Image>(result).bitmap());
    return std::get<Image>(result);
}

std::string causeOf(const ImageResult& result) {
    const auto* error = std::get_if<ImageError>(&result);
    if (!error) {
        ADD_FAILURE() << "decoded";
        return {};
    }
    EXPECT_FALSE(error->cause.empty());
    for (const char c : error->cause)
        EXPECT_TRUE(c >= ' ' && c <= '~') << error->cause;
    return error->cause;
}

}  // namespace kestrelid::imagefile
