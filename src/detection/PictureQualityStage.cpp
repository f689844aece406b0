#include "detection/PictureQualityStage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <utility>

namespace kestrelid::detection {

namespace {

// Grey of the pixel at bytes, 0..255, by the weights of ITU-R BT.601.
int grey(const std::byte* bytes, PixelFormat format) {
    const auto channel = [&](std::size_t index) { return std::to_integer<int>(bytes[index]); };
    if (format == PixelFormat::gray8)
        return channel(0);
    const bool isBlueFirst = format == PixelFormat::bgra8 || format == PixelFormat::bgr8;
    const int red = channel(isBlueFirst ? 2 : 0);
    const int blue = channel(isBlueFirst ? 0 : 2);
    return (299 * red + 587 * channel(1) + 114 * blue + 500) / 1000;
}

using Histogram = std::array<std::int64_t, 256>;

std::int64_t total(const Histogram& histogram) {
    return std::accumulate(histogram.begin(), histogram.end(), std::int64_t{0});
}

// The value below which that share lies.
int quantile(const Histogram& histogram, double share) {
    const auto wanted = static_cast<std::int64_t>(share * static_cast<double>(total(histogram)));
    std::int64_t seen = 0;
    int value = 0;
    while (value < 255 && (seen += histogram[static_cast<std::size_t>(value)]) <= wanted)
        ++value;
    return value;
}

// The columns of a row that lie inside the outline: from, and up to but not including.
std::pair<int, int> columnsInside(const RectangleObservation* outline, int row,
                                  const Bitmap& bitmap) {
    if (!outline)
        return {0, bitmap.width()};
    const double y = 1.0 - (row + 0.5) / bitmap.height();
    double left = 1.0;
    double right = 0.0;
    for (std::size_t index = 0; index < 4; ++index) {
        const NormalizedPoint& a = outline->corners[index];
        const NormalizedPoint& b = outline->corners[(index + 1) % 4];
        if ((a.y <= y) == (b.y <= y))
            continue;
        const double x = a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x);
        left = std::min(left, x);
        right = std::max(right, x);
    }
    const auto column = [&](double x) {
        return static_cast<int>(std::clamp(x, 0.0, 1.0) * bitmap.width());
    };
    return {column(left), column(right)};
}

}  // namespace

PictureQuality pictureQuality(const Bitmap& bitmap, const RectangleObservation* outline) {
    constexpr double kPixelsLookedAt = 500'000.0;  // enough for every share told
    const double pixels = static_cast<double>(bitmap.width()) * bitmap.height();
    const int rowStep = std::max(1, static_cast<int>(std::ceil(pixels / kPixelsLookedAt)));
    const int pixelBytes = bytesPerPixel(bitmap.format());
    Histogram values{};
    Histogram changes{};
    for (int y = 0; y < bitmap.height(); y += rowStep) {
        const auto [first, last] = columnsInside(outline, y, bitmap);
        int before = -1;
        for (int x = first; x < last; ++x) {
            const int value = grey(bitmap.row(y) + std::ptrdiff_t{x} * pixelBytes, bitmap.format());
            ++values[static_cast<std::size_t>(value)];
            if (before >= 0)
                ++changes[static_cast<std::size_t>(std::abs(value - before))];
            before = value;
        }
    }
    const std::int64_t count = total(values);
    PictureQuality quality;
    if (count == 0)
        return quality;
    double sum = 0.0;
    for (std::size_t value = 0; value < values.size(); ++value)
        sum += static_cast<double>(value) * static_cast<double>(values[value]);
    quality.brightness = sum / static_cast<double>(count) / 255.0;
    quality.clippedHighlights = static_cast<double>(values[255]) / static_cast<double>(count);
    const int contrast = quantile(values, 0.995) - quantile(values, 0.005);
    if (contrast > 0)
        quality.sharpness = std::min(1.0, static_cast<double>(quantile(changes, 0.995)) / contrast);
    return quality;
}

}  // namespace kestrelid::detection
