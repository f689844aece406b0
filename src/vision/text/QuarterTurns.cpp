#include "vision/text/QuarterTurns.h"

#include "vision/LargeMat.h"

namespace kestrelid::vision {

cv::Mat turned(const cv::Mat& picture, int turns) {
    if (turns == 0)
        return picture;
    cv::Mat result = largeMat();  // never the picture itself: OpenCV would turn its pixels in place
    cv::rotate(picture, result,
               turns == 1   ? cv::ROTATE_90_CLOCKWISE
               : turns == 2 ? cv::ROTATE_180
                            : cv::ROTATE_90_COUNTERCLOCKWISE);
    return result;
}

cv::Point2f beforeTurns(cv::Point2f point, int turns, cv::Size before) {
    const auto width = static_cast<float>(before.width);
    const auto height = static_cast<float>(before.height);
    switch (turns) {
    case 1:
        return {point.y, height - point.x};
    case 2:
        return {width - point.x, height - point.y};
    case 3:
        return {width - point.y, point.x};
    default:
        return point;
    }
}

}  // namespace kestrelid::vision
