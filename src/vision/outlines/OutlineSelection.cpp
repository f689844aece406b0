#include "vision/outlines/OutlineSelection.h"

#include <algorithm>

namespace kestrelid::vision {

namespace {

constexpr double kSameOutline = 0.85;  // overlap from which two candidates are one
constexpr std::size_t kMostDistinct = 60;
constexpr double kMostContained = 0.9;  // of a candidate's area in another
constexpr double kAllPrint = 0.85;      // of the outer candidate's print
constexpr double kComparable = 0.1;     // of confidence
constexpr double kMuchWorse = 0.15;     // of confidence

bool isSame(const OutlineCandidate& a, const OutlineCandidate& b) {
    return overlap(a.quad, b.quad) > kSameOutline;
}

bool encloses(const OutlineCandidate& outer, const OutlineCandidate& inner) {
    return containedPart(inner.quad, outer.quad) > kMostContained && !isSame(outer, inner);
}

bool holdsAllPrint(const OutlineCandidate& inner, const OutlineCandidate& outer) {
    return inner.printKept >= kAllPrint * outer.printKept;
}

// Whether candidate adds nothing to one of greater confidence, or is unlikely beside it.
bool isBeaten(const OutlineCandidate& candidate, const OutlineCandidate& better) {
    const double behind = better.confidence - candidate.confidence;
    if (encloses(candidate, better)) {
        return holdsAllPrint(better, candidate) || behind > kComparable;
    }
    return encloses(better, candidate) || behind > kMuchWorse;
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
    std::vector<OutlineCandidate> distinct;
    for (const OutlineCandidate& candidate : candidates) {
        if (distinct.size() < kMostDistinct &&
            std::ranges::none_of(distinct,
                                 [&](const auto& other) { return isSame(candidate, other); })) {
            distinct.push_back(candidate);
        }
    }
    std::vector<OutlineCandidate> kept;
    for (const OutlineCandidate& candidate : distinct) {
        // If an outline holds all the print and is about as likely, nothing larger is needed: that
        // would be a desk, or the whole picture.
        const bool reachesTooFar =
            std::ranges::any_of(distinct, [&](const OutlineCandidate& inner) {
                return inner.confidence >= candidate.confidence - kComparable &&
                       encloses(candidate, inner) && holdsAllPrint(inner, candidate);
            });
        if (!reachesTooFar && static_cast<int>(kept.size()) < request.maximumObservations &&
            std::ranges::none_of(kept,
                                 [&](const auto& better) { return isBeaten(candidate, better); })) {
            kept.push_back(candidate);
        }
    }
    return kept;
}

}  // namespace kestrelid::vision
