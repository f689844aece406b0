#pragma once

#include "vision/outlines/Quad.h"

#include <opencv2/core.hpp>

namespace kestrelid::outline {

// Moves each side of a quadrilateral (pixels of picture: blue, green, red) onto the straight edge
// that picture shows close by; sides without one, and sides along the border, stay.
[[nodiscard]] opencv::Quad sharpened(const cv::Mat& picture, const opencv::Quad& quad);

}  // namespace kestrelid::outline
