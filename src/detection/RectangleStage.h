#pragma once

#include "detection/Request.h"

#include <kestrelid/VisionServices.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::detection {

// What the outline says for a document, and where its text is.
struct RectangleEvidence {
    double score = 0.0;  // 0..1
    std::string reason;
    Bitmap textBitmap;
};

// The observation whose bounding box has the largest area, of equal ones the first; none where
// results holds anything but rectangles.
[[nodiscard]] std::optional<RectangleObservation>
largestRectangle(const std::vector<Observation>& results);

// Asks for outlines on the calling thread and calls continuation once with the largest or none.
// Failures go to the console and count as nothing found.
void findRectangle(
    RectangleService& service, const ConsoleSink& console, const Bitmap& bitmap,
    const std::function<void(const std::optional<RectangleObservation>&)>& continuation);

[[nodiscard]] RectangleEvidence
evaluateRectangle(const std::optional<RectangleObservation>& rectangle, const Bitmap& bitmap);

}  // namespace kestrelid::detection
