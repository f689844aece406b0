#pragma once

#include <kestrelid/Bitmap.h>

#include <opencv2/core.hpp>

#include <vector>

namespace kestrelid::vision {

// A picture in grey, and halved again and again, so that any part of it can be sampled at any
// scale without skipping pixels.
class PictureLevels {
public:
    explicit PictureLevels(const Bitmap& bitmap);

    [[nodiscard]] cv::Size size() const { return levels_.front().size(); }

    // A picture of that size whose pixel (x, y) lies at toPicture * (x, y, 1) in this one, pixel
    // centres at whole numbers. What lies outside repeats the border.
    [[nodiscard]] cv::Mat1b sample(const cv::Matx33d& toPicture, cv::Size size) const;

private:
    std::vector<cv::Mat1b> levels_;
};

}  // namespace kestrelid::vision
