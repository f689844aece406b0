#include "platform/vision/outline/OutlineConfidence.h"

#include <cmath>

namespace kestrelid::outline {

std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines) {
    std::vector<WeighedOutline> all;
    for (const MapOutline& outline : outlines) {
        const double evidence =
            -14.0 + 8.0 * outline.inside + 7.0 * outline.fill + 3.0 * outline.corners;
        all.push_back({outline.quad, 1.0 / (1.0 + std::exp(-evidence))});
    }
    return all;
}

}  // namespace kestrelid::outline
