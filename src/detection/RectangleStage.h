#pragma once

#include "detection/Findings.h"

#include <kestrelid/VisionServices.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::detection {

// What the outline says for a document, and where its text is.
struct RectangleEvidence {
    double score = 0.0;  // 0..1
    std::string reason;
    Bitmap textBitmap;
    PixelRect textRegion;  // of textBitmap in the picture
};

// Failures go to the console and count as nothing found.
[[nodiscard]] std::vector<RectangleObservation>
findRectangles(RectangleService& service, const Console& console, const Bitmap& bitmap);

// The index of the outline whose bounding box has the largest area, of equal ones the first.
[[nodiscard]] std::optional<std::size_t>
largestRectangle(const std::vector<RectangleObservation>& rectangles);

// rectangle: null if none was found.
[[nodiscard]] RectangleEvidence evaluateRectangle(const RectangleObservation* rectangle,
                                                  const Bitmap& bitmap);

}  // namespace kestrelid::detection
