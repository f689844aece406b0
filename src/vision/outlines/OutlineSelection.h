#pragma once

#include "vision/outlines/OutlineFinder.h"

#include <kestrelid/VisionServices.h>
#include <vector>

namespace kestrelid::vision {

// Merges near-duplicates, drops candidates that a better one makes unlikely (frames inside a page,
// table tops around it), then applies the request's limits. Best first.
[[nodiscard]] std::vector<OutlineCandidate> selectOutlines(std::vector<OutlineCandidate> candidates,
                                                           const RectangleRequest& request);

}  // namespace kestrelid::vision
