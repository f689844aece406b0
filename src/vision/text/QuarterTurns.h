#pragma once

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// The picture after turns (0 to 3) quarter turns clockwise; the same pixels if turns is 0.
[[nodiscard]] cv::Mat turned(const cv::Mat& picture, int turns);

// Where a point lay before the picture was turned by turns quarter turns clockwise. before: the
// picture's size then.
[[nodiscard]] cv::Point2f beforeTurns(cv::Point2f point, int turns, cv::Size before);

}  // namespace kestrelid::vision
