#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace kestrelid::vision {

// The middle of what may be a line of print, from left to right.
struct Baseline {
    cv::Point2d start;
    cv::Point2d end;

    [[nodiscard]] double length() const { return cv::norm(end - start); }
    [[nodiscard]] cv::Point2d along() const { return (end - start) / length(); }  // unit vector
    [[nodiscard]] cv::Point2d down() const { return {-along().y, along().x}; }
    [[nodiscard]] Baseline reversed() const { return {end, start}; }
    [[nodiscard]] Baseline moved(cv::Point2d by) const { return {start + by, end + by}; }
};

// Long rows of dark print on a lighter ground in a picture of some 700 pixels, tilted by 11 degrees
// at most, longest first. Most of them are no zone.
[[nodiscard]] std::vector<Baseline> lineCandidates(const cv::Mat1b& picture);

}  // namespace kestrelid::vision
