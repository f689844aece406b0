#include "detection/PictureQualityStage.h"

#include "base/GreyStatistics.h"

#include <algorithm>
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
    const int rowStep = base::GreyStatistics::rowStep(bitmap.width(), bitmap.height());
    const int pixelBytes = bytesPerPixel(bitmap.format());
    base::GreyStatistics statistics;
    for (int y = 0; y < bitmap.height(); y += rowStep) {
        const auto [first, last] = columnsInside(outline, y, bitmap);
        for (int x = first; x < last; ++x)
            statistics.add(grey(bitmap.row(y) + std::ptrdiff_t{x} * pixelBytes, bitmap.format()));
        statistics.endRow();
    }
    return {.sharpness = statistics.sharpness(),
            .brightness = statistics.brightness(),
            .clippedHighlights = statistics.clippedHighlights()};
}

}  // namespace kestrelid::detection
