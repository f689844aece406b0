#pragma once

#include "platform/vision/outline/MapOutlines.h"

#include <vector>

namespace kestrelid::outline {

struct WeighedOutline {
    opencv::Quad quad;
    double confidence = 0.0;  // 0..1: the chance that it overlaps a document by 0.8 or more
};

// Outlines with what their measures are worth.
[[nodiscard]] std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines);

}  // namespace kestrelid::outline
