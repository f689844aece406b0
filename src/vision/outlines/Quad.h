#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <optional>
#include <vector>

namespace kestrelid::vision {

// Corners in pixels of the picture, origin at the top left, y growing downwards: top left,
// top right, bottom right, bottom left as seen. Corners may lie outside the picture.
using Quad = std::array<cv::Point2f, 4>;

// Brings four corners into the order of Quad; nothing if they do not make a convex quadrilateral.
[[nodiscard]] std::optional<Quad> orderedQuad(const std::array<cv::Point2f, 4>& corners);

[[nodiscard]] double area(const Quad& quad);

// Width over height, each the mean of two opposite sides.
[[nodiscard]] double aspectRatio(const Quad& quad);

[[nodiscard]] cv::Rect2f boundingBox(const Quad& quad);

// The bounding box's part inside a picture of that size.
[[nodiscard]] cv::Rect2f clippedBox(const Quad& quad, cv::Size picture);

// Intersection over union of the quadrilaterals.
[[nodiscard]] double overlap(const Quad& first, const Quad& second);

// The point in which the lines through a-b and c-d meet. Nothing if they are close to parallel.
[[nodiscard]] std::optional<cv::Point2f> intersection(cv::Point2f a, cv::Point2f b, cv::Point2f c,
                                                      cv::Point2f d);

// The quadrilateral that remains of a convex polygon if its sides are removed one by one, each time
// the one that adds the least area. Rounded and clipped corners come out as corners.
[[nodiscard]] std::optional<Quad> enclosingQuad(std::vector<cv::Point2f> polygon);

}  // namespace kestrelid::vision
