#include "detection/PictureQualityStage.h"

#include "base/ColumnsInside.h"
#include "base/GreyPixel.h"
#include "base/GreyStatistics.h"

namespace kestrelid::detection {

PictureQuality pictureQuality(const Bitmap& bitmap, const RectangleObservation* outline) {
    const int rowStep = base::GreyStatistics::rowStep(bitmap.width(), bitmap.height());
    const int pixelBytes = bytesPerPixel(bitmap.format());
    base::GreyStatistics statistics;
    for (int y = 0; y < bitmap.height(); y += rowStep) {
        const auto [first, last] = base::columnsInside(
            outline ? outline->corners : base::kWholePicture, y, bitmap.width(), bitmap.height());
        for (int x = first; x < last; ++x) {
            const std::byte* pixel = bitmap.row(y) + std::ptrdiff_t{x} * pixelBytes;
            statistics.add(base::channelsOf(pixel, bitmap.format()).grey());
        }
        statistics.endRow();
    }
    return {.sharpness = statistics.sharpness(),
            .brightness = statistics.brightness(),
            .clippedHighlights = statistics.clippedHighlights()};
}

}  // namespace kestrelid::detection
