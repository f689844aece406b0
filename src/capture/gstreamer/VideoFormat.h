#pragma once

#include <cstdint>
#include <string>

namespace kestrelid::capture {

enum class Encoding : std::uint8_t { raw, jpeg, h264 };

// A frame rate as drivers state it.
struct FrameRate {
    int numerator = 0;  // 0: unknown, or changing
    int denominator = 1;

    [[nodiscard]] double perSecond() const { return static_cast<double>(numerator) / denominator; }
    friend bool operator==(const FrameRate&, const FrameRate&) = default;
};

// One way in which a camera delivers.
struct VideoFormat {
    int width = 0;  // pixels
    int height = 0;
    FrameRate rate;
    Encoding encoding = Encoding::raw;
    std::string layout;  // of raw pixels, as GStreamer names it: "YUY2"

    [[nodiscard]] std::int64_t area() const { return std::int64_t{width} * height; }
    friend bool operator==(const VideoFormat&, const VideoFormat&) = default;
};

}  // namespace kestrelid::capture
