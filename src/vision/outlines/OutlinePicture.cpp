#include "vision/outlines/OutlinePicture.h"

#include "vision/ReducedPicture.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>

namespace kestrelid::vision {

cv::Mat outlinePicture(const Bitmap& bitmap) {
    constexpr int kLongestSide = 1400;  // pixels
    cv::Mat picture = viewOf(bitmap);
    // Exact halving is several times as fast as averaging over odd factors. A last odd row or
    // column, less than a thousandth, is dropped.
    while (std::max(picture.cols, picture.rows) > kLongestSide &&
           std::min(picture.cols, picture.rows) > 1) {
        const cv::Size half(picture.cols / 2, picture.rows / 2);
        cv::Mat halved;
        cv::resize(picture({0, 0, 2 * half.width, 2 * half.height}), halved, half, 0, 0,
                   cv::INTER_AREA);
        picture = halved;
    }
    return inBgr(picture, bitmap.format());
}

}  // namespace kestrelid::vision
