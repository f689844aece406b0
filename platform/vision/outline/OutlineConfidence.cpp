#include "platform/vision/outline/OutlineConfidence.h"

#include <cmath>

namespace kestrelid::outline {

std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines) {
    std::vector<WeighedOutline> all;
    for (const MapOutline& outline : outlines) {
        const double evidence =
            -21.11 + 18.31 * outline.inside + 2.22 * outline.fill + 6.95 * outline.corners;
        all.push_back({outline.quad, 1.0 / (1.0 + std::exp(-evidence))});
    }
    return all;
}

}  // namespace kestrelid::outline
