#include "vision/zone/PictureLevels.h"

#include "vision/LargeMat.h"
#include "vision/ReducedPicture.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {
namespace {

constexpr int kSmallestSide = 64;  // pixels; nothing is read from a smaller level

cv::Mat1b inGrey(const Bitmap& bitmap) {
    const cv::Mat view = viewOf(bitmap);
    cv::Mat grey = largeMat();
    switch (bitmap.format()) {
    case PixelFormat::bgra8:
        cv::cvtColor(view, grey, cv::COLOR_BGRA2GRAY);
        break;
    case PixelFormat::rgb8:
        cv::cvtColor(view, grey, cv::COLOR_RGB2GRAY);
        break;
    case PixelFormat::bgr8:
        cv::cvtColor(view, grey, cv::COLOR_BGR2GRAY);
        break;
    case PixelFormat::rgba8:
        cv::cvtColor(view, grey, cv::COLOR_RGBA2GRAY);
        break;
    case PixelFormat::gray8:
        grey = view;
        break;
    }
    return grey;
}

// How many pixels of the picture a step of one pixel takes in the middle of the sampled part.
double stepLength(const cv::Matx33d& toPicture, cv::Size size) {
    const auto at = [&](double x, double y) {
        const cv::Vec3d point = toPicture * cv::Vec3d(x, y, 1.0);
        return cv::Point2d(point[0] / point[2], point[1] / point[2]);
    };
    const double x = size.width / 2.0;
    const double y = size.height / 2.0;
    const cv::Point2d middle = at(x, y);
    return std::max(cv::norm(at(x + 1.0, y) - middle), cv::norm(at(x, y + 1.0) - middle));
}

}  // namespace

PictureLevels::PictureLevels(const Bitmap& bitmap) {
    levels_.push_back(inGrey(bitmap));
    while (std::min(levels_.back().cols, levels_.back().rows) >= 2 * kSmallestSide)
        levels_.push_back(halved(levels_.back()));
}

cv::Mat1b PictureLevels::sample(const cv::Matx33d& toPicture, cv::Size size) const {
    constexpr double kLongestStep = 1.5;  // pixels between samples; more would skip some
    std::size_t level = 0;
    double step = stepLength(toPicture, size);
    while (step > kLongestStep && level + 1 < levels_.size()) {
        step /= 2.0;
        ++level;
    }
    // Centres of pixels at whole numbers: 2x + 0.5 of a level is x of the next.
    const double scale = std::ldexp(1.0, -static_cast<int>(level));
    const double shift = (scale - 1.0) / 2.0;
    const cv::Matx33d toLevel = cv::Matx33d(scale, 0, shift, 0, scale, shift, 0, 0, 1) * toPicture;
    cv::Mat1b sampled;
    constexpr int kHow = cv::INTER_LINEAR | cv::WARP_INVERSE_MAP;
    if (toLevel(2, 0) == 0.0 && toLevel(2, 1) == 0.0 &&
        toLevel(2, 2) == 1.0)  // takes half the time
        cv::warpAffine(levels_[level], sampled, toLevel.get_minor<2, 3>(0, 0), size, kHow,
                       cv::BORDER_REPLICATE);
    else
        cv::warpPerspective(levels_[level], sampled, toLevel, size, kHow, cv::BORDER_REPLICATE);
    return sampled;
}

}  // namespace kestrelid::vision
