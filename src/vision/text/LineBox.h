#pragma once

#include "vision/text/ReadingOrder.h"

#include <opencv2/core.hpp>

#include <array>
#include <span>
#include <vector>

namespace kestrelid::vision {

// A line of text in a picture, with the direction that it is read in.
struct LineBox {
    cv::Point2f center;
    cv::Point2f along;  // unit vector in reading direction
    float length = 0.0f;
    float height = 0.0f;
    bool crosswise =
        false;  // runs up or down the page, so that the page's direction does not tell its own

    // Unit vector from the top of the letters to their bottom.
    [[nodiscard]] cv::Point2f down() const { return {-along.y, along.x}; }
    [[nodiscard]] LineBox reversed() const { return {center, -along, length, height, crosswise}; }

    // From the top left corner of the line as it is read, clockwise.
    [[nodiscard]] std::array<cv::Point2f, 4> corners() const;

    // Its place on a page that is read in direction pageAlong.
    [[nodiscard]] LineExtent extentOn(cv::Point2f pageAlong) const;
};

// The lines of one page and the direction that most of its text runs in: one of the two ways along
// it, which may be that of a page upside down.
struct PageLines {
    std::vector<LineBox> lines;
    cv::Point2f along{1.0f, 0.0f};

    // The page turned by half a turn.
    void reverse();
};

[[nodiscard]] PageLines alignToPage(std::span<const cv::RotatedRect> boxes);

// The line upright in a picture of the given height; length follows its shape up to longest pixels.
[[nodiscard]] cv::Mat cropLine(const cv::Mat& picture, const LineBox& line, int height,
                               int longest);

}  // namespace kestrelid::vision
