#include "vision/outlines/ClassicalOutlineFinder.h"

#include "vision/outlines/ContourProposals.h"
#include "vision/outlines/LineProposals.h"
#include "vision/outlines/OutlineEvidence.h"

namespace kestrelid::vision {

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

}  // namespace kestrelid::vision
