#include "tests/vision/text/DrawnText.h"

#include "tests/vision/outlines/DrawnScenes.h"

#include <opencv2/imgproc.hpp>

namespace kestrelid::test {

Bitmap drawnPage(const std::vector<std::string>& lines, int quarterTurns, PixelFormat format,
                 Paper paper) {
    constexpr int kPitch = 80;
    cv::Mat3b page(120 + kPitch * static_cast<int>(lines.size()), 900, cv::Vec3b(226, 232, 236));
    if (paper == Paper::shaded)
        for (int x = 0; x < page.cols; ++x)
            page.col(x) *= 1.0 - 0.5 * x / page.cols;
    for (std::size_t index = 0; index < lines.size(); ++index)
        cv::putText(page, lines[index], {50, 100 + kPitch * static_cast<int>(index)},
                    cv::FONT_HERSHEY_DUPLEX, 1.3, cv::Scalar(40, 30, 30), 2, cv::LINE_AA);
    for (int turn = 0; turn < quarterTurns; ++turn) {
        cv::Mat3b turned;
        cv::rotate(page, turned, cv::ROTATE_90_CLOCKWISE);
        page = turned;
    }
    return bitmapOf(page, format);
}

Bitmap emptyScene() {
    cv::Mat3b scene(480, 640, cv::Vec3b(120, 110, 90));
    cv::circle(scene, {200, 220}, 120, cv::Scalar(160, 70, 60), cv::FILLED);
    cv::rectangle(scene, {380, 100, 200, 300}, cv::Scalar(170, 190, 200), cv::FILLED);
    cv::GaussianBlur(scene, scene, {}, 4);
    return bitmapOf(scene, PixelFormat::rgb8);
}

Bitmap evenBitmap(int width, int height) {
    return bitmapOf(cv::Mat3b(height, width, cv::Vec3b::all(128)), PixelFormat::gray8);
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
