#include "platform/vision/opencv/FullPageFinder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrelid::opencv {

namespace {

// A well-supported outline that holds the print is the better answer.
constexpr double kMostConfidence = 0.8;

double rising(double value, double low, double high) {
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

}  // namespace

std::vector<OutlineCandidate> FullPageFinder::find(const Scene& scene) const {
    const cv::Size size = scene.picture.size();
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    std::array<bool, 16> cells{};
    float left = width;
    float right = 0.0f;
    float top = height;
    float bottom = 0.0f;
    std::size_t glyphs = 0;
    for (const TextLine& line : scene.text.lines) {
        const cv::Rect2f box = line.box.boundingRect2f();
        left = std::min(left, box.x);
        right = std::max(right, box.br().x);
        top = std::min(top, box.y);
        bottom = std::max(bottom, box.br().y);
        glyphs += line.glyphs.size();
        for (const cv::Point2f glyph : line.glyphs) {
            const auto column = static_cast<std::size_t>(4.0f * glyph.x / width);
            const auto row = static_cast<std::size_t>(4.0f * glyph.y / height);
            cells[std::min<std::size_t>(row, 3) * 4 + std::min<std::size_t>(column, 3)] = true;
        }
    }
    const double spanned = std::min((right - left) / width, (bottom - top) / height);
    const double confidence =
        kMostConfidence * rising(static_cast<double>(scene.text.lines.size()), 3, 9) *
        rising(static_cast<double>(glyphs), 20, 80) * rising(spanned, 0.45, 0.75) *
        rising(static_cast<double>(std::ranges::count(cells, true)), 5, 10) *
        rising(scene.text.inkPart, 0.1, 0.4);
    const Quad whole{cv::Point2f{0.0f, 0.0f}, {width, 0.0f}, {width, height}, {0.0f, height}};
    return {{whole, confidence, 1.0}};
}

}  // namespace kestrelid::opencv
