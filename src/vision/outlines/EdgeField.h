#pragma once

#include "vision/outlines/WorkingPicture.h"

#include <opencv2/core.hpp>
#include <vector>

namespace kestrelid::vision {

// A pixel on the ridge of an edge. The normal is of length one and points towards more brightness
// (or colour).
struct EdgePoint {
    cv::Point2f position;
    cv::Point2f normal;
    float strength;  // 1: clearly above this picture's texture
};

// Edges of all channels in one: at each pixel the gradient of the channel that stands out most from
// its own texture.
struct EdgeField {
    cv::Mat_<cv::Vec2f>
        gradient;      // in units of the channel's texture: from about 1 on it is an edge
    cv::Mat1b ridges;  // 255 on the ridges of edges, without those of letters and specks
    std::vector<EdgePoint> points;  // the same ridges as a list
};

[[nodiscard]] EdgeField makeEdgeField(const WorkingPicture& picture);

// How much of a straight line at this pixel, across normal, the field shows: 0 to 1. Looks two
// pixels to either side, since pages bend.
[[nodiscard]] float lineSupport(const EdgeField& field, cv::Point2f position, cv::Point2f normal);

}  // namespace kestrelid::vision
