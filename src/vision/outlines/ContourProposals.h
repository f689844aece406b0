#pragma once

#include "vision/outlines/EdgeField.h"
#include "vision/outlines/Quad.h"
#include "vision/outlines/WorkingPicture.h"

#include <vector>

namespace kestrelid::vision {

// Quadrilaterals around connected edges and around areas that differ from the picture's rim: pages
// with bent sides or round corners.
[[nodiscard]] std::vector<Quad> proposeFromContours(const WorkingPicture& picture,
                                                    const EdgeField& field);

}  // namespace kestrelid::vision
