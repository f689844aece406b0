#pragma once

#include "detection/Findings.h"

#include <kestrelid/VisionServices.h>

#include <optional>
#include <string>

namespace kestrelid::detection {

// What the outline says for a document, and where its text is.
struct RectangleEvidence {
    double score = 0.0;  // 0..1
    std::string reason;
    Bitmap textBitmap;
};

// The outline whose bounding box has the largest area, of equal ones the first. Failures go to the
// console and count as nothing found.
[[nodiscard]] std::optional<RectangleObservation>
findRectangle(RectangleService& service, const Console& console, const Bitmap& bitmap);

[[nodiscard]] RectangleEvidence
evaluateRectangle(const std::optional<RectangleObservation>& rectangle, const Bitmap& bitmap);

}  // namespace kestrelid::detection
