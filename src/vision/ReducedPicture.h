#pragma once

#include <kestrelid/VisionServices.h>

#include <opencv2/core.hpp>

#include <span>

namespace kestrelid::vision {

// The bitmap's rows, not to be written to: OpenCV has no read-only matrix.
[[nodiscard]] cv::Mat viewOf(const Bitmap& bitmap);

// A copy in blue, green, red of rows in that format.
[[nodiscard]] cv::Mat inBgr(const cv::Mat& picture, PixelFormat format);

// Each pixel the mean of four. A last odd row or column is dropped.
[[nodiscard]] cv::Mat halved(const cv::Mat& picture);

// The picture, made smaller: halved while that leaves at least the size that is asked for, since
// means over odd factors take several times as long.
[[nodiscard]] cv::Mat shrunk(const cv::Mat& picture, cv::Size size);

// The bitmap in blue, green, red; made smaller if its longer side exceeds longestSide pixels. The
// picture never shares the bitmap's pixels.
[[nodiscard]] cv::Mat reducedPicture(const Bitmap& bitmap, int longestSide);

// The upright box around points of a picture, in terms of that picture.
[[nodiscard]] NormalizedRect normalizedBounds(std::span<const cv::Point2f> points,
                                              cv::Size picture);

}  // namespace kestrelid::vision
