#include "platform/vision/outline/OutlineConfidence.h"

#include <cmath>

namespace kestrelid::outline {

std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines) {
    std::vector<WeighedOutline> all;
    for (const MapOutline& outline : outlines) {
        const double evidence =
            -25.02 + 7.79 * outline.inside + 16.76 * outline.fill + 7.60 * outline.corners;
        all.push_back({outline.quad, 1.0 / (1.0 + std::exp(-evidence))});
    }
    return all;
}

}  // namespace kestrelid::outline
