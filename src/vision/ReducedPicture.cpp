#include "vision/ReducedPicture.h"

#include "vision/LargeMat.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdint>

namespace kestrelid::vision {
namespace {

// A factor between sizes below which each pixel counts when interpolated, and no resizing is needed
// to save time.
constexpr double kLittle = 4.0 / 3.0;

}  // namespace

cv::Mat viewOf(const Bitmap& bitmap) {
    return {bitmap.height(), bitmap.width(), CV_8UC(bytesPerPixel(bitmap.format())),
            const_cast<std::byte*>(bitmap.row(0)), static_cast<std::size_t>(bitmap.stride())};
}

cv::Mat inBgr(const cv::Mat& picture, PixelFormat format) {
    cv::Mat result = largeMat();
    switch (format) {
    case PixelFormat::bgra8:
        cv::cvtColor(picture, result, cv::COLOR_BGRA2BGR);
        break;
    case PixelFormat::rgb8:
        cv::cvtColor(picture, result, cv::COLOR_RGB2BGR);
        break;
    case PixelFormat::bgr8:
        picture.copyTo(result);
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
    cv::Mat result = largeMat();
    cv::resize(picture({0, 0, 2 * half.width, 2 * half.height}), result, half, 0, 0,
               cv::INTER_AREA);
    return result;
}

cv::Mat resized(const cv::Mat& picture, cv::Size size) {
    cv::Mat result = picture;
    while (result.cols >= 2 * size.width && result.rows >= 2 * size.height)
        result = halved(result);
    if (result.size() == size)
        return result;
    const bool shrinks = kLittle * size.width < result.cols || kLittle * size.height < result.rows;
    cv::Mat last = largeMat();
    cv::resize(result, last, size, 0, 0, shrinks ? cv::INTER_AREA : cv::INTER_LINEAR);
    return last;
}

cv::Mat reducedPicture(const Bitmap& bitmap, int sufficientSide) {
    const cv::Mat view = viewOf(bitmap);
    const int longest = std::max(view.cols, view.rows);
    int parts = 1;
    while (longest >= 2 * parts * sufficientSide)
        parts *= 2;
    const bool areHalvesEnough = longest <= kLittle * parts * sufficientSide;
    const auto side = [&](int pixels) {
        return std::max(1, areHalvesEnough
                               ? pixels / parts
                               : static_cast<int>(std::int64_t{pixels} * sufficientSide / longest));
    };
    return inBgr(resized(view, {side(view.cols), side(view.rows)}), bitmap.format());
}

cv::Mat1f planesOf(const cv::Mat& picture, const std::array<double, 3>& scales,
                   const std::array<double, 3>& shifts) {
    cv::Mat planes = largeMat();
    planes.create(3 * picture.rows, picture.cols, CV_32F);
    cv::Mat channel;
    for (int plane = 0; plane < 3; ++plane) {
        cv::extractChannel(picture, channel, 2 - plane);
        cv::Mat target = planes.rowRange(plane * picture.rows, (plane + 1) * picture.rows);
        const auto index = static_cast<std::size_t>(plane);
        channel.convertTo(target, CV_32F, scales[index], shifts[index]);
    }
    return planes;
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
