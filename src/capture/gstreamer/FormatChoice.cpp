#include "capture/gstreamer/FormatChoice.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace kestrelid::capture {

namespace {

constexpr double kSmoothRate = 25.0;  // frames/s
constexpr double kWantedRate = 30.0;  // more costs power and shows nothing

constexpr std::int64_t kLiveArea = std::int64_t{kLiveDimensions.width} * kLiveDimensions.height;

double deliveredRate(const VideoFormat& format) {
    // An unknown rate is nearly always the usual one.
    return format.rate.numerator == 0 ? kWantedRate : format.rate.perSecond();
}

// Twice and half are equally far.
double distance(double value, double wanted) {
    return std::abs(std::log(std::max(value, 1e-9) / wanted));
}

bool isWide(const VideoFormat& format) {
    return format.width * kLiveDimensions.height == format.height * kLiveDimensions.width;
}

// Smaller is better. Smooth formats come before jerky ones, but a picture too small for reading
// comes last.
auto liveRank(const VideoFormat& format) {
    constexpr double kReadableShare = 0.3;  // of kLiveArea: 640x480 is 0.33
    const bool smooth = deliveredRate(format) >= kSmoothRate;
    const bool readable = static_cast<double>(format.area()) >= kReadableShare * kLiveArea;
    return std::make_tuple(!readable, !smooth, smooth ? 0.0 : -deliveredRate(format),
                           distance(static_cast<double>(format.area()), kLiveArea), !isWide(format),
                           distance(deliveredRate(format), kWantedRate),
                           format.encoding == Encoding::jpeg);
}

constexpr double kLatestStill = 1.0;  // seconds; a person takes longer for a failure

// Seconds until a still of that format, about: the change to it, and a frame and a half.
double stillDelay(const VideoFormat& format, const std::optional<VideoFormat>& live) {
    constexpr double kSwitch = 0.1;   // in place
    constexpr double kRestart = 0.3;  // with other elements
    double delay = 0.0;
    if (live && !(format == *live))
        delay = format.encoding == live->encoding ? kSwitch : kRestart;
    return delay + 1.5 / std::max(deliveredRate(format), 1e-9);
}

bool fits(const VideoFormat& format, const PhotoDimensions& bound) {
    return (bound.width <= 0 || format.width <= bound.width) &&
           (bound.height <= 0 || format.height <= bound.height);
}

int even(double length) {
    return std::max(2, 2 * static_cast<int>(std::lround(length / 2)));
}

}  // namespace

std::optional<VideoFormat> chooseLive(const std::vector<VideoFormat>& formats) {
    const auto best = std::min_element(
        formats.begin(), formats.end(),
        [](const VideoFormat& a, const VideoFormat& b) { return liveRank(a) < liveRank(b); });
    return best == formats.end() ? std::nullopt : std::optional(*best);
}

std::optional<VideoFormat> chooseStill(const std::vector<VideoFormat>& formats,
                                       const PhotoDimensions& bound,
                                       const std::optional<VideoFormat>& live) {
    const auto rank = [&](const VideoFormat& format) {
        const bool fit = fits(format, bound);
        const double delay = stillDelay(format, live);
        const bool late = delay > kLatestStill;
        return std::make_tuple(!fit, late, late ? delay : 0.0, fit ? -format.area() : format.area(),
                               delay);
    };
    const auto best = std::min_element(
        formats.begin(), formats.end(),
        [&](const VideoFormat& a, const VideoFormat& b) { return rank(a) < rank(b); });
    return best == formats.end() ? std::nullopt : std::optional(*best);
}

PhotoDimensions scaledInto(const PhotoDimensions& size, const PhotoDimensions& bound) {
    double scale = 1.0;
    if (bound.width > 0)
        scale = std::min(scale, static_cast<double>(bound.width) / size.width);
    if (bound.height > 0)
        scale = std::min(scale, static_cast<double>(bound.height) / size.height);
    if (scale >= 1.0)
        return size;
    const auto within = [scale](int length) {
        return std::max(2, 2 * static_cast<int>(std::floor(length * scale / 2)));
    };
    return {.width = within(size.width), .height = within(size.height)};
}

PhotoDimensions liveDimensions(const PhotoDimensions& size) {
    const double area = static_cast<double>(size.width) * size.height;
    if (area <= kLiveArea)
        return size;
    const double scale = std::sqrt(kLiveArea / area);
    return {.width = even(size.width * scale), .height = even(size.height * scale)};
}

}  // namespace kestrelid::capture
