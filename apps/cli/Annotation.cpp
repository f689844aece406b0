#include "apps/cli/Annotation.h"

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
const cv::Scalar kNoCheckDigit(40, 110, 230);
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
    case PixelFormat::bgr8:
        cv::cvtColor(source, rgb, cv::COLOR_BGR2RGB);
        break;
    case PixelFormat::rgba8:
        cv::cvtColor(source, rgb, cv::COLOR_RGBA2RGB);
        break;
    case PixelFormat::gray8:
        cv::cvtColor(source, rgb, cv::COLOR_GRAY2RGB);
        break;
    }
}

void drawQuadrilateral(cv::Mat& rgb, const std::array<NormalizedPoint, 4>& shape,
                       const cv::Scalar& colour, int thickness) {
    std::array<cv::Point, 4> corners;
    std::transform(shape.begin(), shape.end(), corners.begin(), [&](const NormalizedPoint& point) {
        // Observations have their origin at the lower left, rows at the upper left.
        return cv::Point(cvRound(point.x * rgb.cols), cvRound((1.0 - point.y) * rgb.rows));
    });
    const cv::Point* points = corners.data();
    const int count = static_cast<int>(corners.size());
    cv::polylines(rgb, &points, &count, 1, true, colour, thickness, cv::LINE_AA);
}

// Where characters first to last (counted from 0) of a line stand.
std::array<NormalizedPoint, 4> partOf(const ZoneLine& line, int first, int last) {
    const auto between = [](const NormalizedPoint& a, const NormalizedPoint& b, double share) {
        return NormalizedPoint{a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
    };
    const auto count = static_cast<double>(line.confidences.size());
    const double from = first / count;
    const double to = (last + 1) / count;
    const auto& [topLeft, topRight, bottomRight, bottomLeft] = line.corners;
    return {between(topLeft, topRight, from), between(topLeft, topRight, to),
            between(bottomLeft, bottomRight, to), between(bottomLeft, bottomRight, from)};
}

void drawZone(cv::Mat& rgb, const MachineReadableZone& zone, int thickness) {
    if (zone.fields.empty()) {  // found but not read
        for (const ZoneLine& line : zone.lines)
            drawQuadrilateral(rgb, line.corners, kNoPassport, thickness);
    }
    for (const ZoneField& field : zone.fields) {
        const cv::Scalar& colour = field.checkDigit == CheckDigit::passed   ? kPassport
                                   : field.checkDigit == CheckDigit::failed ? kNoPassport
                                                                            : kNoCheckDigit;
        for (std::size_t first = 0; first < field.places.size();) {
            std::size_t last = first;
            while (last + 1 < field.places.size() &&
                   field.places[last + 1].line == field.places[first].line)
                ++last;
            const ZoneLine& line = zone.lines[static_cast<std::size_t>(field.places[first].line)];
            drawQuadrilateral(rgb,
                              partOf(line, field.places[first].column, field.places[last].column),
                              colour, thickness);
            first = last + 1;
        }
    }
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

    const Examination& seen = picture.examination;
    const cv::Scalar& colour = seen.verdict.isPassport() ? kPassport : kNoPassport;
    const int thickness = std::max(2, std::max(rgb.cols, rgb.rows) / 300);
    const int thin = std::max(1, thickness / 3);
    for (const RectangleObservation& outline : seen.outlines)
        drawQuadrilateral(rgb, outline.corners, kOtherCandidate, thin);
    if (seen.chosenOutline)
        drawQuadrilateral(rgb, seen.outlines[*seen.chosenOutline].corners, colour, thickness);
    for (const MachineReadableZone& zone : seen.zones)
        drawZone(rgb, zone, thin);
    drawVerdict(rgb, seen.verdict, colour);

    auto drawn =
        Bitmap::wrap(bitmap->width(), bitmap->height(), stride, PixelFormat::rgb8, pixels, size);
    return drawn ? Image(std::move(*drawn)) : Image();
}

}  // namespace kestrelid::cli
