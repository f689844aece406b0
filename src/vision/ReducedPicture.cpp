#include "vision/ReducedPicture.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {

cv::Mat viewOf(const Bitmap& bitmap) {
    return {bitmap.height(), bitmap.width(), CV_8UC(bytesPerPixel(bitmap.format())),
            const_cast<std::byte*>(bitmap.row(0)), static_cast<std::size_t>(bitmap.stride())};
}

cv::Mat inBgr(const cv::Mat& picture, PixelFormat format) {
    cv::Mat result;
    switch (format) {
    case PixelFormat::bgra8:
        cv::cvtColor(picture, result, cv::COLOR_BGRA2BGR);
        break;
    case PixelFormat::rgb8:
        cv::cvtColor(picture, result, cv::COLOR_RGB2BGR);
        break;
    case PixelFormat::bgr8:
        result = picture.clone();
        break;
    case PixelFormat::rgba8:
        cv::cvtColor(picture, result, cv::COLOR_RGBA2BGR);
        break;
    case PixelFormat::gray8:
        cv::cvtColor(picture, result, cv::COLOR_GRAY2BGR);
        break;
    }
    return result;
}

cv::Mat halved(const cv::Mat& picture) {
    const cv::Size half(picture.cols / 2, picture.rows / 2);
    cv::Mat result;
    cv::resize(picture({0, 0, 2 * half.width, 2 * half.height}), result, half, 0, 0,
               cv::INTER_AREA);
    return result;
}

cv::Mat resized(const cv::Mat& picture, cv::Size size) {
    cv::Mat result = picture;
    while (result.cols >= 2 * size.width && result.rows >= 2 * size.height)
        result = halved(result);
    const bool shrinks = size.width < result.cols || size.height < result.rows;
    cv::resize(result, result, size, 0, 0, shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
    return result;
}

cv::Mat reducedPicture(const Bitmap& bitmap, int longestSide) {
    const cv::Mat view = viewOf(bitmap);
    cv::Mat picture = view;
    const int longest = std::max(view.cols, view.rows);
    if (longest > longestSide) {
        const double scale = static_cast<double>(longestSide) / longest;
        const cv::Size size(std::max(1, cvRound(view.cols * scale)),
                            std::max(1, cvRound(view.rows * scale)));
        picture = resized(view, size);
    }
    return inBgr(picture, bitmap.format());
}

std::vector<float> planesOf(const cv::Mat& picture, const std::array<double, 3>& scales,
                            const std::array<double, 3>& shifts) {
    const std::size_t size = picture.total();
    std::vector<float> values(3 * size);
    cv::Mat channel;
    for (std::size_t plane = 0; plane < 3; ++plane) {
        cv::extractChannel(picture, channel, static_cast<int>(2 - plane));
        cv::Mat target(picture.size(), CV_32F, values.data() + plane * size);
        channel.convertTo(target, CV_32F, scales[plane], shifts[plane]);
    }
    return values;
}

NormalizedRect normalizedBounds(std::span<const cv::Point2f> points, cv::Size picture) {
    double left = picture.width;
    double top = picture.height;
    double right = 0.0;
    double bottom = 0.0;
    for (const auto& point : points) {
        left = std::min<double>(left, point.x);
        top = std::min<double>(top, point.y);
        right = std::max<double>(right, point.x);
        bottom = std::max<double>(bottom, point.y);
    }
    left = std::clamp<double>(left, 0.0, picture.width);
    right = std::clamp<double>(right, left, picture.width);
    top = std::clamp<double>(top, 0.0, picture.height);
    bottom = std::clamp<double>(bottom, top, picture.height);
    return {left / picture.width, 1.0 - bottom / picture.height, (right - left) / picture.width,
            (bottom - top) / picture.height};
}

}  // namespace kestrelid::vision
