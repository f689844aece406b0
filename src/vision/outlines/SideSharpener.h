#pragma once

#include "vision/outlines/Quad.h"

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// Moves each side of a quadrilateral (pixels of picture: blue, green, red) onto the straight edge
// that picture shows close by; sides without one, and sides along the border, stay.
[[nodiscard]] Quad sharpened(const cv::Mat& picture, const Quad& quad);

}  // namespace kestrelid::vision
