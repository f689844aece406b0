#include "apps/cli/Annotation.h"

#include "apps/cli/OutlineRecorder.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

namespace kestrelid::cli {
namespace {

// Red, green, blue: the order of the rows drawn on.
const cv::Scalar kPassport(30, 170, 70);
const cv::Scalar kNoPassport(220, 60, 40);
const cv::Scalar kOtherCandidate(150, 150, 150);
const cv::Scalar kBanner(20, 20, 20);
const cv::Scalar kBannerText(255, 255, 255);

int matType(PixelFormat format) {
    return CV_MAKETYPE(CV_8U, bytesPerPixel(format));
}

// Draws into rows of 3 bytes a pixel, whatever the bitmap has.
void copyAsRgb(const Bitmap& bitmap, cv::Mat& rgb) {
    // The matrix only reads; OpenCV has no constant view.
    auto* rows = const_cast<std::byte*>(bitmap.row(0));
    const cv::Mat source(bitmap.height(), bitmap.width(), matType(bitmap.format()), rows,
                         static_cast<std::size_t>(bitmap.stride()));
    switch (bitmap.format()) {
    case PixelFormat::rgb8:
        source.copyTo(rgb);
        break;
    case PixelFormat::bgra8:
        cv::cvtColor(source, rgb, cv::COLOR_BGRA2RGB);
        break;
    case PixelFormat::gray8:
        cv::cvtColor(source, rgb, cv::COLOR_GRAY2RGB);
        break;
    }
}

void drawOutline(cv::Mat& rgb, const RectangleObservation& outline, const cv::Scalar& colour,
                 int thickness) {
    std::array<cv::Point, 4> corners;
    std::transform(outline.corners.begin(), outline.corners.end(), corners.begin(),
                   [&](const NormalizedPoint& point) {
                       // Observations have their origin at the lower left, rows at the upper left.
                       return cv::Point(cvRound(point.x * rgb.cols),
                                        cvRound((1.0 - point.y) * rgb.rows));
                   });
    const cv::Point* points = corners.data();
    const int count = static_cast<int>(corners.size());
    cv::polylines(rgb, &points, &count, 1, true, colour, thickness, cv::LINE_AA);
}

void drawVerdict(cv::Mat& rgb, const PassportValidationResult& result, const cv::Scalar& colour) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s  %.3f",
                  result.isPassport() ? "passport" : "not a passport", result.confidence());
    const int font = cv::FONT_HERSHEY_SIMPLEX;
    const double scale = std::max(0.4, std::min(rgb.cols, rgb.rows) / 700.0);
    const int thickness = std::max(1, cvRound(scale * 1.6));
    int baseline = 0;
    const cv::Size size = cv::getTextSize(text.data(), font, scale, thickness, &baseline);
    const int margin = size.height / 2;
    const cv::Rect banner(0, 0, size.width + 3 * margin, size.height + baseline + 2 * margin);
    cv::rectangle(rgb, banner, kBanner, cv::FILLED);
    cv::rectangle(rgb, cv::Rect(0, 0, margin, banner.height), colour, cv::FILLED);
    cv::putText(rgb, text.data(), cv::Point(2 * margin, margin + size.height), font, scale,
                kBannerText, thickness, cv::LINE_AA);
}

}  // namespace

Image annotated(const JudgedPicture& picture) {
    const std::optional<Bitmap>& bitmap = picture.image.bitmap();
    if (!bitmap)
        return {};
    const std::ptrdiff_t stride = std::ptrdiff_t{3} * bitmap->width();
    const std::size_t size = static_cast<std::size_t>(stride) * bitmap->height();
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    cv::Mat rgb(bitmap->height(), bitmap->width(), CV_8UC3, pixels.get(),
                static_cast<std::size_t>(stride));
    copyAsRgb(*bitmap, rgb);

    const cv::Scalar& colour = picture.result.isPassport() ? kPassport : kNoPassport;
    const int thickness = std::max(2, std::max(rgb.cols, rgb.rows) / 300);
    for (const RectangleObservation& outline : picture.outlines)
        drawOutline(rgb, outline, kOtherCandidate, std::max(1, thickness / 3));
    if (const auto chosen = chosenOutline(picture.outlines))
        drawOutline(rgb, *chosen, colour, thickness);
    drawVerdict(rgb, picture.result, colour);

    auto drawn =
        Bitmap::wrap(bitmap->width(), bitmap->height(), stride, PixelFormat::rgb8, pixels, size);
    return drawn ? Image(std::move(*drawn)) : Image();
}

}  // namespace kestrelid::cli
