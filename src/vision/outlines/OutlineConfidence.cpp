#include "vision/outlines/OutlineConfidence.h"

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {
namespace {

constexpr double kClear = 0.97;     // one look is enough
constexpr double kHopeless = 0.03;  // nothing is there
constexpr float kRival = 0.5F;      // of the largest clear box: what is smaller stays smaller

}  // namespace

std::vector<WeighedOutline> weighed(const std::vector<MapOutline>& outlines) {
    std::vector<WeighedOutline> all;
    for (const MapOutline& outline : outlines) {
        const double evidence =
            -24.36 + 11.29 * outline.inside + 13.33 * outline.fill + 6.84 * outline.corners;
        all.push_back({outline.quad, 1.0 / (1.0 + std::exp(-evidence))});
    }
    return all;
}

bool leavesDoubt(const std::vector<WeighedOutline>& outlines, cv::Size size) {
    float clear = 0.0F;  // pixels of the largest box
    float doubtful = 0.0F;
    for (const WeighedOutline& outline : outlines) {
        if (outline.confidence <= kHopeless)
            continue;
        float& largest = outline.confidence < kClear ? doubtful : clear;
        largest = std::max(largest, clippedBox(outline.quad, size).area());
    }
    return doubtful > kRival * clear;
}

}  // namespace kestrelid::vision
