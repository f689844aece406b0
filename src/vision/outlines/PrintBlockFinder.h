#pragma once

#include "vision/outlines/OutlineFinder.h"

namespace kestrelid::vision {

// Blocks of parallel lines of print, with the margin that a page has around them: for pages with an
// outline that is covered, or lost in what lies beside it. Coarse, so it is asked only if the other
// finders see nothing.
class PrintBlockFinder final : public OutlineFinder {
public:
    [[nodiscard]] std::vector<OutlineCandidate> find(const Scene& scene) const override;
};

}  // namespace kestrelid::vision
