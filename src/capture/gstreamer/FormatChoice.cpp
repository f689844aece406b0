#include "capture/gstreamer/FormatChoice.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace kestrelid::capture {

namespace {

constexpr double kSmoothRate = 25.0;  // frames/s
constexpr double kWantedRate = 30.0;  // more costs power and shows nothing

constexpr double kLiveArea = double{kLiveDimensions.width} * kLiveDimensions.height;

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

constexpr double kLatestStill = 1.0;  // seconds; a person takes longer for a failure

// Seconds until a still of that format, about: the change to it, and a frame and a half.
double stillDelay(const VideoFormat& format, const std::optional<VideoFormat>& live) {
    constexpr double kSwitch = 0.1;
    const double change = live && !(format == *live) ? kSwitch : 0.0;
    return change + 1.5 / std::max(deliveredRate(format), 1e-9);
}

bool fits(const VideoFormat& format, const PhotoDimensions& bound) {
    return (bound.width <= 0 || format.width <= bound.width) &&
           (bound.height <= 0 || format.height <= bound.height);
}

using Formats = std::vector<VideoFormat>;

// Pixels of the largest still that comes in time; of that shape, if one is given.
std::int64_t largestStill(const Formats& formats, const PhotoDimensions& bound,
                          const std::optional<VideoFormat>& live,
                          const std::optional<VideoFormat>& shape) {
    std::int64_t area = 0;
    for (const VideoFormat& format : formats) {
        if (fits(format, bound) && stillDelay(format, live) <= kLatestStill &&
            (!shape || haveOneShape(format, *shape)))
            area = std::max(area, format.area());
    }
    return area;
}

// Pixels that a still needs if it is taken for the sake of one shape of frames and photos.
double enoughPixels(std::int64_t largest) {
    constexpr double kShare = 0.4;
    constexpr double kPage = 1.5e6;  // small print of a page can be read
    const auto most = static_cast<double>(largest);
    return std::max(kShare * most, std::min(kPage, most));
}

// Smaller is better. Smooth formats come before jerky ones, but a picture too small for reading
// comes last.
auto liveRank(const VideoFormat& format, const Formats& formats) {
    constexpr double kReadableShare = 0.3;  // of kLiveArea: 640x480 is 0.33
    constexpr double kAmpleShare = 0.75;    // below, reading matters more than the shape
    constexpr double kCostlyShare = 2.5;    // above, the time to convert does: 1920x1080 is 2.25
    const auto share = static_cast<double>(format.area()) / kLiveArea;
    const bool smooth = deliveredRate(format) >= kSmoothRate;
    const std::int64_t still = largestStill(formats, {}, format, format);
    const std::int64_t largest = largestStill(formats, {}, format, std::nullopt);
    const bool isShared = share >= kAmpleShare && share <= kCostlyShare &&
                          static_cast<double>(still) >= enoughPixels(largest);
    return std::make_tuple(share < kReadableShare, !smooth, smooth ? 0.0 : -deliveredRate(format),
                           isShared ? -still : 0,
                           distance(static_cast<double>(format.area()), kLiveArea), !isWide(format),
                           distance(deliveredRate(format), kWantedRate), format.encoding);
}

int even(double length) {
    return std::max(2, 2 * static_cast<int>(std::lround(length / 2)));
}

}  // namespace

bool haveOneShape(const VideoFormat& a, const VideoFormat& b) {
    constexpr double kSame = 0.02;  // 854x480 is 16:9
    const double ratio =
        static_cast<double>(a.width) * b.height / (static_cast<double>(a.height) * b.width);
    return std::abs(std::log(ratio)) < kSame;
}

std::optional<VideoFormat> chooseLive(const std::vector<VideoFormat>& formats) {
    const auto best = std::ranges::min_element(
        formats, {}, [&](const VideoFormat& format) { return liveRank(format, formats); });
    return best == formats.end() ? std::nullopt : std::optional(*best);
}

std::optional<VideoFormat> chooseStill(const std::vector<VideoFormat>& formats,
                                       const PhotoDimensions& bound,
                                       const std::optional<VideoFormat>& live) {
    const double enough = enoughPixels(largestStill(formats, bound, live, std::nullopt));
    const auto rank = [&](const VideoFormat& format) {
        const bool fit = fits(format, bound);
        const double delay = stillDelay(format, live);
        const bool late = delay > kLatestStill;
        const bool shared = fit && live && haveOneShape(format, *live) &&
                            static_cast<double>(format.area()) >= enough;
        return std::make_tuple(!fit, late, late ? delay : 0.0, !shared,
                               fit ? -format.area() : format.area(), delay);
    };
    const auto best = std::ranges::min_element(formats, {}, rank);
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
