#pragma once

#include "vision/outlines/MapOutlines.h"

#include <vector>

namespace kestrelid::vision {

struct WeighedOutline {
    Quad quad;
    double confidence = 0.0;  // 0..1: the chance that it overlaps a document by 0.8 or more
};

// Outlines with what their measures are worth.
[[nodiscard]] std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines);

// Whether another look at a picture of that size may change which outline is the largest, the one
// that counts: none is clear, or one in doubt comes near the largest clear one. Outlines in pixels,
// most confident first.
[[nodiscard]] bool leavesDoubt(const std::vector<WeighedOutline>& outlines, cv::Size size);

}  // namespace kestrelid::vision
