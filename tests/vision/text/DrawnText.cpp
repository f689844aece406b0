#include "tests/vision/text/DrawnText.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstring>

namespace kestrelid::test {
namespace {

Bitmap bitmapOf(const cv::Mat& picture, PixelFormat format) {
    const auto stride =
        static_cast<std::size_t>(picture.cols) * picture.elemSize() + 12;  // rows need not touch
    const std::size_t size = stride * static_cast<std::size_t>(picture.rows);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]());
    for (int y = 0; y < picture.rows; ++y)
        std::memcpy(pixels.get() + static_cast<std::size_t>(y) * stride, picture.ptr(y),
                    static_cast<std::size_t>(picture.cols) * picture.elemSize());
    return Bitmap::wrap(picture.cols, picture.rows, static_cast<std::ptrdiff_t>(stride), format,
                        pixels, size)
        .value();
}

}  // namespace

Bitmap drawnPage(const std::vector<std::string>& lines, int quarterTurns, PixelFormat format,
                 Paper paper) {
    constexpr int kPitch = 80;
    cv::Mat page(120 + kPitch * static_cast<int>(lines.size()), 900, CV_8UC3,
                 cv::Scalar(226, 232, 236));
    if (paper == Paper::shaded)
        for (int x = 0; x < page.cols; ++x)
            page.col(x) *= 1.0 - 0.5 * x / page.cols;
    for (std::size_t index = 0; index < lines.size(); ++index)
        cv::putText(page, lines[index], {50, 100 + kPitch * static_cast<int>(index)},
                    cv::FONT_HERSHEY_DUPLEX, 1.3, cv::Scalar(40, 30, 30), 2, cv::LINE_AA);
    for (int turn = 0; turn < quarterTurns; ++turn) {
        cv::Mat turned;
        cv::rotate(page, turned, cv::ROTATE_90_CLOCKWISE);
        page = turned;
    }
    if (format == PixelFormat::bgra8)
        cv::cvtColor(page, page, cv::COLOR_BGR2BGRA);
    else
        cv::cvtColor(page, page,
                     format == PixelFormat::rgb8 ? cv::COLOR_BGR2RGB : cv::COLOR_BGR2GRAY);
    return bitmapOf(page, format);
}

Bitmap emptyScene() {
    cv::Mat scene(480, 640, CV_8UC3, cv::Scalar(90, 110, 120));
    cv::circle(scene, {200, 220}, 120, cv::Scalar(60, 70, 160), cv::FILLED);
    cv::rectangle(scene, {380, 100, 200, 300}, cv::Scalar(200, 190, 170), cv::FILLED);
    cv::GaussianBlur(scene, scene, {}, 4);
    return bitmapOf(scene, PixelFormat::rgb8);
}

Bitmap evenBitmap(int width, int height) {
    return bitmapOf(cv::Mat(height, width, CV_8UC1, cv::Scalar(128)), PixelFormat::gray8);
}

std::vector<std::string> textsOf(const TextResult& result) {
    std::vector<std::string> texts;
    for (const auto& observation : std::get<std::vector<TextObservation>>(result)) {
        std::string text = observation.topCandidates(1).at(0).string;
        std::erase(text, ' ');
        texts.push_back(std::move(text));
    }
    return texts;
}

}  // namespace kestrelid::test
