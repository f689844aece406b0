#pragma once

#include "vision/outlines/EdgeField.h"
#include "vision/outlines/Quad.h"

#include <vector>

namespace kestrelid::vision {

// Quadrilaterals between four of the picture's longest straight lines, its borders included (at
// most two of them), if the field supports all four sides: sides that bend little, corners that may
// be covered or cut off by the border.
[[nodiscard]] std::vector<Quad> proposeFromLines(const EdgeField& field);

}  // namespace kestrelid::vision
