#include "detection/RectangleStage.h"

#include "detection/VerdictNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kestrelid::detection {

namespace {

// With a full stop whatever the locale.
std::string twoDecimals(double value) {
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 2);
    return end.ec == std::errc{} ? std::string(text.data(), end.ptr) : std::string("?");
}

// A whole number of pixels inside -limit..limit, NaN as 0.
int pixels(double value, double limit) {
    return std::isnan(value) ? 0 : static_cast<int>(std::clamp(value, -limit, limit));
}

// The box in rows from the top, rounded outward to whole pixels.
PixelRect pixelBox(const NormalizedRect& box, const Bitmap& bitmap) {
    constexpr double kFarOutside = 1e8;  // pixels; no bitmap is as large, and sums of it fit an int
    const double width = bitmap.width();
    const double height = bitmap.height();
    const double left = box.x * width;
    const double top = (1.0 - box.y - box.height) * height;
    PixelRect region;
    region.x = pixels(std::floor(left), kFarOutside);
    region.y = pixels(std::floor(top), kFarOutside);
    region.width = pixels(std::ceil(left + box.width * width), kFarOutside) - region.x;
    region.height = pixels(std::ceil(top + box.height * height), kFarOutside) - region.y;
    return region;
}

}  // namespace

std::vector<RectangleObservation> findRectangles(RectangleService& service, const Console& console,
                                                 const Bitmap& bitmap) {
    return findings([&] { return service.perform(bitmap, {}); },
                    {.reported = "Rect detect error:", .notPerformed = kRectangleRequestFailed},
                    console);
}

std::optional<std::size_t> largestRectangle(const std::vector<RectangleObservation>& rectangles) {
    const auto largest =
        std::max_element(rectangles.begin(), rectangles.end(),
                         [](const RectangleObservation& a, const RectangleObservation& b) {
                             return a.boundingBox.area() < b.boundingBox.area();
                         });
    if (largest == rectangles.end())
        return std::nullopt;
    return static_cast<std::size_t>(largest - rectangles.begin());
}

RectangleEvidence evaluateRectangle(const RectangleObservation* rectangle, const Bitmap& bitmap) {
    const PixelRect whole{.x = 0, .y = 0, .width = bitmap.width(), .height = bitmap.height()};
    if (!rectangle)
        return {0.0, "No document rectangle found.", bitmap, whole};
    const double area = rectangle->boundingBox.area();
    const bool isLarge = area >= kRectangleAreaThreshold;
    const PixelRect box = pixelBox(rectangle->boundingBox, bitmap);
    const std::optional<Bitmap> part = bitmap.crop(box);
    return {isLarge ? 1.0 : std::fmin(area / kRectangleAreaThreshold, 1.0),
            (isLarge ? "Document rectangle detected (area fraction "
                     : "Rectangle present but small (area fraction ") +
                twoDecimals(area) + ").",
            part.value_or(bitmap),
            part ? PixelRect{.x = std::max(box.x, 0),
                             .y = std::max(box.y, 0),
                             .width = part->width(),
                             .height = part->height()}
                 : whole};
}

}  // namespace kestrelid::detection
