#include "platform/vision/opencv/ClassicalOutlineFinder.h"

#include "platform/vision/opencv/ContourProposals.h"
#include "platform/vision/opencv/LineProposals.h"
#include "platform/vision/opencv/OutlineEvidence.h"

namespace kestrelid::opencv {

std::vector<OutlineCandidate> ClassicalOutlineFinder::find(const Scene& scene) const {
    std::vector<Quad> quads = proposeFromContours(scene.picture, scene.edges);
    const std::vector<Quad> fromLines = proposeFromLines(scene.edges);
    quads.insert(quads.end(), fromLines.begin(), fromLines.end());
    std::vector<OutlineCandidate> candidates;
    for (const Quad& quad : quads) {
        if (const auto evidence = weigh(quad, scene)) {
            candidates.push_back({quad, confidenceOf(*evidence), evidence->printKept});
        }
    }
    return candidates;
}

}  // namespace kestrelid::opencv
