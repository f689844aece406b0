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

std::optional<RectangleObservation> findRectangle(RectangleService& service, const Console& console,
                                                  const Bitmap& bitmap) {
    const std::vector<RectangleObservation> rectangles = findings(
        [&] { return service.perform(bitmap, {}); },
        {.reported = "Rect detect error:", .notPerformed = kRectangleRequestFailed}, console);
    const auto largest =
        std::max_element(rectangles.begin(), rectangles.end(),
                         [](const RectangleObservation& a, const RectangleObservation& b) {
                             return a.boundingBox.area() < b.boundingBox.area();
                         });
    return largest == rectangles.end() ? std::nullopt : std::optional(*largest);
}

RectangleEvidence evaluateRectangle(const std::optional<RectangleObservation>& rectangle,
                                    const Bitmap& bitmap) {
    if (!rectangle)
        return {0.0, "No document rectangle found.", bitmap};
    const double area = rectangle->boundingBox.area();
    const bool isLarge = area >= kRectangleAreaThreshold;
    return {isLarge ? 1.0 : std::fmin(area / kRectangleAreaThreshold, 1.0),
            (isLarge ? "Document rectangle detected (area fraction "
                     : "Rectangle present but small (area fraction ") +
                twoDecimals(area) + ").",
            bitmap.crop(pixelBox(rectangle->boundingBox, bitmap)).value_or(bitmap)};
}

}  // namespace kestrelid::detection
