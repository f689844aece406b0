#include "capture/gstreamer/SwayingFrames.h"

#include <algorithm>
#include <cstring>

namespace kestrelid::capture {

namespace {

constexpr std::uint32_t kReach = 2 * 256;                // of a pixel's 256ths
constexpr std::uint64_t kStep = 256 / 15;                // a frame
constexpr std::uint64_t kFramesOneWay = kReach / kStep;  // about a second

// The offset of frame number, in 256ths of a pixel: there and back.
std::uint32_t offsetOf(std::uint64_t number) {
    const std::uint64_t phase = number % (2 * kFramesOneWay);
    const std::uint64_t steps = phase <= kFramesOneWay ? phase : 2 * kFramesOneWay - phase;
    return static_cast<std::uint32_t>(steps * kStep);
}

// Two channels at a time.
std::uint32_t blend(std::uint32_t a, std::uint32_t b, std::uint32_t shareOfB) {
    constexpr std::uint32_t kMask = 0x00ff00ff;
    const std::uint32_t even =
        ((a & kMask) * (256 - shareOfB) + (b & kMask) * shareOfB) >> 8 & kMask;
    const std::uint32_t odd =
        ((a >> 8 & kMask) * (256 - shareOfB) + (b >> 8 & kMask) * shareOfB) & ~kMask;
    return even | odd;
}

}  // namespace

void drawSwayingFrame(const Bitmap& picture, std::uint64_t number, std::span<std::uint32_t> frame) {
    const auto width = static_cast<std::size_t>(picture.width());
    const std::uint32_t offset = offsetOf(number);
    const std::size_t whole = std::min<std::size_t>(offset / 256, width - 1);
    const std::uint32_t part = offset % 256;
    for (int y = 0; y < picture.height(); ++y) {
        const auto* from = reinterpret_cast<const std::uint32_t*>(picture.row(y));
        std::uint32_t* to = frame.data() + static_cast<std::size_t>(y) * width;
        const std::size_t moved = width - whole;
        std::fill(to, to + whole, from[0]);
        if (part == 0) {
            std::memcpy(to + whole, from, moved * sizeof *from);
            continue;
        }
        to[whole] = from[0];
        for (std::size_t x = 1; x < moved; ++x)
            to[whole + x] = blend(from[x], from[x - 1], part);
    }
}

}  // namespace kestrelid::capture
