#include "vision/outlines/PrintBlockFinder.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kestrelid::vision {

namespace {

constexpr float kSameDirection = 7.0f;  // degrees
constexpr float kNear = 1.0f / 12;      // of the picture's longest side, between lines of one block
constexpr float kMargin = 0.12f;        // of the block's sides, added on each side
constexpr double kMostConfidence = 0.6;

double rising(double value, double low, double high) {
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

cv::Point2f directionOf(const TextLine& line) {
    const double radians = line.box.angle * CV_PI / 180.0;
    return {static_cast<float>(std::cos(radians)), static_cast<float>(std::sin(radians))};
}

bool areNeighbours(const TextLine& a, const TextLine& b, float reach) {
    const float apart = std::abs(a.box.angle - b.box.angle);
    if (std::min(apart, 180.0f - apart) > kSameDirection) {
        return false;
    }
    const cv::Point2f along = directionOf(a);
    const cv::Point2f between = b.box.center - a.box.center;
    const float across = std::abs(between.x * along.y - between.y * along.x);
    const float gap = std::abs(between.dot(along)) - 0.5f * (a.box.size.width + b.box.size.width);
    return across <= reach && gap <= reach;
}

// The rectangle around the lines, in their direction, with margins. Nothing if they are too few.
std::optional<OutlineCandidate> blockOf(const std::vector<TextLine>& lines, cv::Size picture) {
    double strokes = 0.0;
    for (const TextLine& line : lines) {
        strokes += static_cast<double>(line.glyphs.size());
    }
    const double confidence = kMostConfidence * rising(static_cast<double>(lines.size()), 2, 6) *
                              rising(strokes, 20, 60) *
                              (1.0 - rising(partRunningOut(lines, picture), 0.3, 0.7));
    if (confidence <= 0.0) {
        return std::nullopt;
    }
    const cv::Point2f u = directionOf(*std::ranges::max_element(
        lines, {}, [](const TextLine& line) { return line.box.size.width; }));
    const cv::Point2f v(-u.y, u.x);
    float left = 1e6f;
    float right = -1e6f;
    float top = 1e6f;
    float bottom = -1e6f;
    for (const TextLine& line : lines) {
        cv::Point2f corners[4];
        line.box.points(corners);
        for (const cv::Point2f corner : corners) {
            left = std::min(left, corner.dot(u));
            right = std::max(right, corner.dot(u));
            top = std::min(top, corner.dot(v));
            bottom = std::max(bottom, corner.dot(v));
        }
    }
    const float marginX = kMargin * (right - left);
    const float marginY = kMargin * (bottom - top);
    left -= marginX;
    right += marginX;
    top -= marginY;
    bottom += marginY;
    const auto quad = orderedQuad(
        {u * left + v * top, u * right + v * top, u * right + v * bottom, u * left + v * bottom});
    return quad ? std::optional<OutlineCandidate>({*quad, confidence, 1.0}) : std::nullopt;
}

}  // namespace

std::vector<OutlineCandidate> PrintBlockFinder::find(const Scene& scene) const {
    const std::vector<TextLine>& lines = scene.text.lines;
    const auto reach = kNear * static_cast<float>(std::max(scene.picture.size().width,
                                                           scene.picture.size().height));
    // Lines that are neighbours, directly or through others, make a block.
    std::vector<std::size_t> block(lines.size());
    std::iota(block.begin(), block.end(), std::size_t{0});
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (std::size_t k = i + 1; k < lines.size(); ++k) {
            if (block[i] != block[k] && areNeighbours(lines[i], lines[k], reach)) {
                std::ranges::replace(block, std::size_t{block[k]}, std::size_t{block[i]});
            }
        }
    }
    std::vector<OutlineCandidate> candidates;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::vector<TextLine> members;
        for (std::size_t k = 0; k < lines.size(); ++k) {
            if (block[k] == i) {
                members.push_back(lines[k]);
            }
        }
        if (!members.empty()) {
            if (const auto candidate = blockOf(members, scene.picture.size())) {
                candidates.push_back(*candidate);
            }
        }
    }
    return candidates;
}

}  // namespace kestrelid::vision
