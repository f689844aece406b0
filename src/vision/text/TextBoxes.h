#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace kestrelid::vision {

// The lines of text in a probability map (CV_32FC1, 0..1): rotated boxes in pixels of the map,
// grown from the shrunken cores that the network marks to whole lines (differentiable binarization,
// arXiv:1911.08947).
[[nodiscard]] std::vector<cv::RotatedRect> textBoxes(const cv::Mat& probability);

}  // namespace kestrelid::vision
