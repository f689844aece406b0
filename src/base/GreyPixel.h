#pragma once

#include <kestrelid/Bitmap.h>

#include <algorithm>
#include <cstddef>

namespace kestrelid::base {

// A pixel's channels, 0..255 each.
struct Channels {
    int red;
    int green;
    int blue;

    // By the weights of ITU-R BT.601.
    [[nodiscard]] int grey() const { return (299 * red + 587 * green + 114 * blue + 500) / 1000; }

    [[nodiscard]] int darkest() const { return std::min(red, std::min(green, blue)); }
};

// Of the pixel at bytes.
[[nodiscard]] inline Channels channelsOf(const std::byte* bytes, PixelFormat format) {
    const auto channel = [bytes](std::size_t index) { return std::to_integer<int>(bytes[index]); };
    if (format == PixelFormat::gray8)
        return {channel(0), channel(0), channel(0)};
    const bool isBlueFirst = format == PixelFormat::bgra8 || format == PixelFormat::bgr8;
    return {channel(isBlueFirst ? 2 : 0), channel(1), channel(isBlueFirst ? 0 : 2)};
}

}  // namespace kestrelid::base
