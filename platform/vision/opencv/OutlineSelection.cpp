#include "platform/vision/opencv/OutlineSelection.h"

#include <algorithm>

namespace kestrelid::opencv {

namespace {

constexpr double kSameOutline = 0.85;   // overlap from which two candidates are one
constexpr double kMostContained = 0.9;  // of a candidate's area in another
constexpr double kMuchWorse = 0.15;     // of confidence

}  // namespace

std::vector<OutlineCandidate> selectOutlines(std::vector<OutlineCandidate> candidates,
                                             const RectangleRequest& request) {
    std::erase_if(candidates, [&](const OutlineCandidate& candidate) {
        const double aspect = aspectRatio(candidate.quad);
        return candidate.confidence < static_cast<double>(request.minimumConfidence) ||
               aspect < static_cast<double>(request.minimumAspectRatio) ||
               aspect > static_cast<double>(request.maximumAspectRatio);
    });
    std::ranges::stable_sort(candidates, std::greater{}, &OutlineCandidate::confidence);
    std::vector<OutlineCandidate> kept;
    for (const OutlineCandidate& candidate : candidates) {
        if (static_cast<int>(kept.size()) >= request.maximumObservations) {
            break;
        }
        const bool isDoubtful = std::ranges::any_of(kept, [&](const OutlineCandidate& better) {
            return overlap(candidate.quad, better.quad) > kSameOutline ||
                   containedPart(candidate.quad, better.quad) > kMostContained ||
                   candidate.confidence < better.confidence - kMuchWorse;
        });
        if (!isDoubtful) {
            kept.push_back(candidate);
        }
    }
    return kept;
}

}  // namespace kestrelid::opencv
