#pragma once

#include <kestrelid/VisionServices.h>

#include <opencv2/core.hpp>

#include <array>
#include <span>

namespace kestrelid::vision {

// The bitmap's rows, not to be written to: OpenCV has no read-only matrix.
[[nodiscard]] cv::Mat viewOf(const Bitmap& bitmap);

// A copy in blue, green, red of rows in that format.
[[nodiscard]] cv::Mat inBgr(const cv::Mat& picture, PixelFormat format);

// Each pixel the mean of four. A last odd row or column is dropped.
[[nodiscard]] cv::Mat halved(const cv::Mat& picture);

// The picture at that size: halved while that leaves enough, since means over odd factors take
// several times as long, and then averaged; interpolated where it grows, or shrinks by less than a
// quarter. May share the picture's pixels.
[[nodiscard]] cv::Mat resized(const cv::Mat& picture, cv::Size size);

// The bitmap in blue, green, red. If its longer side exceeds sufficientSide pixels by more than a
// third, it is made smaller, to between that and a third more: as halving alone gets there from the
// sizes of most cameras. The picture never shares the bitmap's pixels.
[[nodiscard]] cv::Mat reducedPicture(const Bitmap& bitmap, int sufficientSide);

// Red, below it green, below it blue of a picture in blue, green, red; each value times the
// channel's scale, plus its shift.
[[nodiscard]] cv::Mat1f planesOf(const cv::Mat& picture, const std::array<double, 3>& scales,
                                 const std::array<double, 3>& shifts);

// The upright box around points of a picture, in terms of that picture.
[[nodiscard]] NormalizedRect normalizedBounds(std::span<const cv::Point2f> points,
                                              cv::Size picture);

}  // namespace kestrelid::vision
