#pragma once

#include "vision/outlines/OutlineFinder.h"

namespace kestrelid::vision {

// Outlines from straight lines and from contours, weighed by the evidence along their sides.
class ClassicalOutlineFinder final : public OutlineFinder {
public:
    [[nodiscard]] std::vector<OutlineCandidate> find(const Scene& scene) const override;
};

}  // namespace kestrelid::vision
