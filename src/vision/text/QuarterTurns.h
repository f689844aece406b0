#pragma once

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// The picture after turns (0 to 3) quarter turns clockwise; the same pixels where turns is 0.
[[nodiscard]] cv::Mat turned(const cv::Mat& picture, int turns);

// Where a point of a picture after turns quarter turns clockwise lay before them. before: the
// picture's size then.
[[nodiscard]] cv::Point2f beforeTurns(cv::Point2f point, int turns, cv::Size before);

}  // namespace kestrelid::vision
