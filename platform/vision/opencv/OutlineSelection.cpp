#include "platform/vision/opencv/OutlineSelection.h"

#include <algorithm>

namespace kestrelid::opencv {

namespace {

constexpr double kSameOutline = 0.85;   // overlap from which two candidates are one
constexpr double kMostContained = 0.9;  // of a candidate's area in another
constexpr double kAllPrint =
    0.85;  // of the outer candidate's print, so that the inner one is the page
constexpr double kMuchWorse = 0.15;  // of confidence
constexpr double kEnclosingWorse =
    0.1;  // the same for one that brings print which the better one leaves out

// Whether candidate adds nothing to one of greater confidence, or is unlikely beside it.
bool isBeaten(const OutlineCandidate& candidate, const OutlineCandidate& better) {
    if (overlap(candidate.quad, better.quad) > kSameOutline ||
        containedPart(candidate.quad, better.quad) > kMostContained) {
        return true;
    }
    const double behind = better.confidence - candidate.confidence;
    if (containedPart(better.quad, candidate.quad) > kMostContained) {
        return better.printKept >= kAllPrint * candidate.printKept || behind > kEnclosingWorse;
    }
    return behind > kMuchWorse;
}

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
        if (std::ranges::none_of(kept, [&](const OutlineCandidate& better) {
                return isBeaten(candidate, better);
            })) {
            kept.push_back(candidate);
        }
    }
    return kept;
}

}  // namespace kestrelid::opencv
