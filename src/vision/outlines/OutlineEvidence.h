#pragma once

#include "vision/outlines/OutlineFinder.h"

#include <optional>

namespace kestrelid::vision {

// Measures that a quadrilateral is the outline of a page. All 0..1.
struct OutlineEvidence {
    double meanSupport = 0.0;   // part of the outline along which an edge runs
    double leastSupport = 0.0;  // the same for the side that has least of it
    double contrast = 0.0;      // inside and outside differ, alike all along
    double leastContrast = 0.0;
    double overshoot = 0.0;    // sides that run on beyond their corners: table tops, grain, keys
    double border = 0.0;       // part of the outline that is the picture's own border
    double print = 0.0;        // part of the inside that is near lines of print
    double printAround = 0.0;  // the same for a ring around it, a seventh of the sides wide
    double printKept = 0.0;    // of all print in the picture, the part inside
    double area = 0.0;         // part of the picture that the bounding box covers
};

// Nothing if more than two sides are the picture's own border.
[[nodiscard]] std::optional<OutlineEvidence> weigh(const Quad& quad, const Scene& scene);

// 0..1, see OpenCvRectangleService.h.
[[nodiscard]] double confidenceOf(const OutlineEvidence& evidence);

}  // namespace kestrelid::vision
