#include "tests/vision/outlines/DrawnScenes.h"

#include <cmath>
#include <cstring>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

namespace kestrelid::test {

namespace {

void print(cv::Mat3b& page, const std::string& text, cv::Point place, double height) {
    const double scale = height / 21.0;  // the font's capitals at scale one
    cv::putText(page, text, place, cv::FONT_HERSHEY_SIMPLEX, scale, {35, 30, 30},
                height > 10 ? 2 : 1, cv::LINE_AA);
}

}  // namespace

cv::Mat3b drawnPage() {
    cv::Mat3b page(500, 710, cv::Vec3b(205, 222, 214));
    print(page, "REPUBLIC OF EXAMPLE", {30, 45}, 17);
    cv::rectangle(page, {30, 90}, {200, 310}, {235, 225, 225}, cv::FILLED);
    cv::rectangle(page, {30, 90}, {200, 310}, {40, 40, 40}, 2);
    cv::ellipse(page, {115, 180}, {45, 60}, 0, 0, 360, {120, 150, 200}, cv::FILLED);
    cv::rectangle(page, {55, 250}, {175, 308}, {90, 60, 50}, cv::FILLED);
    for (int row = 0; row < 7; ++row) {
        print(page, "Given names / Prenoms", {230, 100 + 40 * row}, 7);
        print(page, "SPECIMEN EXAMPLE", {230, 118 + 40 * row}, 12);
        print(page, "12 AUG 1974", {500, 118 + 40 * row}, 12);
    }
    print(page, "P<UTOSPECIMEN<<EXAMPLE<<<<<<<<<<<<<", {30, 430}, 15);
    print(page, "L898902C36UTO7408122F1204159<<<<<10", {30, 470}, 15);
    return page;
}

cv::Mat3b grain(cv::Size size, std::uint64_t seed) {
    cv::RNG random(seed);
    const double phase = random.uniform(0.0, 6.0);
    cv::Mat3b picture(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const double bent = y + 9.0 * std::sin(0.004 * x + phase);
            const double level =
                1.0 + 0.10 * std::sin(0.21 * bent) + 0.06 * std::sin(0.57 * bent + phase);
            picture(y, x) = cv::Vec3b(cv::Vec3d(60, 85, 120) * level);
        }
    return picture;
}

cv::Mat3b laidOn(const cv::Mat3b& desk, const cv::Mat3b& page, const vision::Quad& corners) {
    const auto width = static_cast<float>(page.cols);
    const auto height = static_cast<float>(page.rows);
    const vision::Quad flat{cv::Point2f{0, 0}, {width, 0}, {width, height}, {0, height}};
    const cv::Mat transform = cv::getPerspectiveTransform(flat.data(), corners.data());
    cv::Mat3b scene = desk.clone();
    cv::warpPerspective(page, scene, transform, scene.size(), cv::INTER_AREA,
                        cv::BORDER_TRANSPARENT);
    cv::GaussianBlur(scene, scene, {3, 3}, 0.0);
    return scene;
}

Bitmap bitmapOf(const cv::Mat3b& bgr, PixelFormat format) {
    cv::Mat converted;
    if (format == PixelFormat::bgr8)
        converted = bgr;
    else
        cv::cvtColor(bgr, converted,
                     format == PixelFormat::bgra8   ? cv::COLOR_BGR2BGRA
                     : format == PixelFormat::rgba8 ? cv::COLOR_BGR2RGBA
                     : format == PixelFormat::rgb8  ? cv::COLOR_BGR2RGB
                                                    : cv::COLOR_BGR2GRAY);
    const std::size_t row = static_cast<std::size_t>(converted.cols) * converted.elemSize();
    const std::size_t stride = row + 24;  // rows are seldom packed in camera frames
    const std::size_t size = stride * static_cast<std::size_t>(converted.rows);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]());
    for (int y = 0; y < converted.rows; ++y) {
        std::memcpy(pixels.get() + stride * static_cast<std::size_t>(y), converted.ptr(y), row);
    }
    return Bitmap::wrap(converted.cols, converted.rows, static_cast<std::ptrdiff_t>(stride), format,
                        pixels, size)
        .value();
}

}  // namespace kestrelid::test
