#pragma once

#include "platform/vision/opencv/EdgeField.h"
#include "platform/vision/opencv/Quad.h"
#include "platform/vision/opencv/WorkingPicture.h"

#include <vector>

namespace kestrelid::opencv {

// Quadrilaterals around connected edges and around areas that differ from the picture's rim: pages
// whose sides bend or whose corners are round.
[[nodiscard]] std::vector<Quad> proposeFromContours(const WorkingPicture& picture,
                                                    const EdgeField& field);

}  // namespace kestrelid::opencv
