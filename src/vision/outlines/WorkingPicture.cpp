#include "vision/outlines/WorkingPicture.h"

#include "vision/ReducedPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

// The factor that brings the brightest parts (99.5 % of the pixels are darker) to a well-lit level.
// A dim picture keeps enough steps for edges up to about a factor of eight; beyond that there is
// only noise to raise.
double brighteningOf(const cv::Mat& luma) {
    constexpr double kWellLit = 220.0;
    constexpr double kMostGain = 8.0;
    std::array<int, 256> histogram{};
    for (int y = 0; y < luma.rows; ++y) {
        const auto* row = luma.ptr<std::uint8_t>(y);
        for (int x = 0; x < luma.cols; ++x) {
            ++histogram[row[x]];
        }
    }
    auto left = static_cast<std::ptrdiff_t>(luma.total() / 200);
    int bright = 255;
    while (bright > 1 && (left -= histogram[static_cast<std::size_t>(bright)]) >= 0) {
        --bright;
    }
    return std::clamp(kWellLit / bright, 1.0, kMostGain);
}

cv::Mat labOf(const cv::Mat& bgr) {
    // OpenCV 4.6 makes its tables for this conversion at the first one, without a lock.
    static std::once_flag hasTables;
    std::call_once(hasTables, [] {
        const cv::Mat pixel(1, 1, CV_8UC3, cv::Scalar::all(0));
        cv::Mat converted;
        cv::cvtColor(pixel, converted, cv::COLOR_BGR2Lab);
    });
    cv::Mat lab;
    cv::cvtColor(bgr, lab, cv::COLOR_BGR2Lab);
    return lab;
}

}  // namespace

WorkingPicture makeWorkingPicture(const Bitmap& bitmap, int longestSide) {
    const cv::Mat view = viewOf(bitmap);
    const double scale =
        std::min(1.0, static_cast<double>(longestSide) / std::max(view.cols, view.rows));
    const auto scaled = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    // Exact halving of a large picture is several times as fast as averaging over odd factors. A
    // last odd row or column, less than a thousandth of it, is dropped.
    cv::Mat source = view;
    while (std::max(source.cols, source.rows) >= 4 * longestSide &&
           std::min(source.cols, source.rows) > 1) {
        const cv::Size half(source.cols / 2, source.rows / 2);
        cv::Mat halved;
        cv::resize(source({0, 0, 2 * half.width, 2 * half.height}), halved, half, 0.0, 0.0,
                   cv::INTER_AREA);
        source = halved;
    }
    cv::Mat small;
    cv::resize(source, small, {scaled(view.cols), scaled(view.rows)}, 0.0, 0.0, cv::INTER_AREA);

    WorkingPicture picture;
    cv::Mat bgr;
    if (bitmap.format() == PixelFormat::gray8) {
        picture.luma = small;
    } else {
        bgr = inBgr(small, bitmap.format());
        cv::cvtColor(bgr, picture.luma, cv::COLOR_BGR2GRAY);
    }
    const double gain = brighteningOf(picture.luma);
    if (gain > 1.0) {
        cv::Mat brighter;
        picture.luma.convertTo(brighter, -1, gain);
        picture.luma = brighter;
        bgr.convertTo(bgr, -1, gain);
    }
    if (!bgr.empty()) {
        picture.colour = labOf(bgr);
    }
    return picture;
}

}  // namespace kestrelid::vision
