#pragma once

#include "vision/outlines/EdgeField.h"

#include <vector>

namespace kestrelid::vision {

// A straight line across the picture, with what the edge field shows of it.
struct StraightLine {
    cv::Point2f point;      // on the line, nearest to the picture's centre
    cv::Point2f direction;  // length one
    bool border = false;
    float first = 0.0f;         // entry into the picture, in pixels from point
    std::vector<float> summed;  // support from first on, one step a pixel, summed up
    int longestRun = 0;         // pixels supported without a gap

    // Mean support between two places on the line, both in pixels from its point. The part outside
    // the picture is unknown and left out. 0 if that is the larger part.
    [[nodiscard]] float supportBetween(float from, float to) const;
};

// The picture's longest straight lines, and its four borders.
[[nodiscard]] std::vector<StraightLine> findStraightLines(const EdgeField& field);

}  // namespace kestrelid::vision
