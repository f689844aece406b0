#include "vision/outlines/OutlinePicture.h"

#include "vision/ReducedPicture.h"

#include <algorithm>

namespace kestrelid::vision {

cv::Mat outlinePicture(const Bitmap& bitmap) {
    constexpr int kLongestSide = 1400;  // pixels
    cv::Mat picture = viewOf(bitmap);
    while (std::max(picture.cols, picture.rows) > kLongestSide &&
           std::min(picture.cols, picture.rows) > 1)
        picture = halved(picture);
    return inBgr(picture, bitmap.format());
}

}  // namespace kestrelid::vision
