#include "vision/outlines/FullPageFinder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kestrelid::vision {

namespace {

// A well-supported outline that holds the print is the better answer.
constexpr double kMostConfidence = 0.8;

double rising(double value, double low, double high) {
    return std::clamp((value - low) / (high - low), 0.0, 1.0);
}

constexpr std::size_t kParts = 4;  // the picture is looked at in kParts x kParts parts

// Of the print, by length, the part in lines close to the direction that has half of it on either
// side.
double parallelPart(std::vector<TextLine> lines) {
    std::ranges::sort(lines, {}, [](const TextLine& line) { return line.box.angle; });
    double all = 0.0;
    for (const TextLine& line : lines) {
        all += line.box.size.width;
    }
    double before = 0.0;
    float middle = 0.0f;
    for (const TextLine& line : lines) {
        before += line.box.size.width;
        if (before >= 0.5 * all) {
            middle = line.box.angle;
            break;
        }
    }
    double parallel = 0.0;
    for (const TextLine& line : lines) {
        const float apart = std::abs(line.box.angle - middle);
        parallel += std::min(apart, 180.0f - apart) <= 2.0f ? line.box.size.width : 0.0f;
    }
    return parallel / std::max(all, 1.0);
}

}  // namespace

FullPageEvidence weighFullPage(const Scene& scene) {
    const cv::Size size = scene.picture.size();
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    FullPageEvidence evidence;
    std::array<bool, kParts * kParts> hasPrint{};
    float left = width;
    float right = 0.0f;
    float top = height;
    float bottom = 0.0f;
    for (const TextLine& line : scene.text.lines) {
        const cv::Rect2f box = line.box.boundingRect2f();
        left = std::min(left, box.x);
        right = std::max(right, box.br().x);
        top = std::min(top, box.y);
        bottom = std::max(bottom, box.br().y);
        evidence.strokes += static_cast<double>(line.glyphs.size());
        for (const cv::Point2f glyph : line.glyphs) {
            const auto column = static_cast<std::size_t>(kParts * glyph.x / width);
            const auto row = static_cast<std::size_t>(kParts * glyph.y / height);
            hasPrint[std::min(row, kParts - 1) * kParts + std::min(column, kParts - 1)] = true;
        }
    }
    evidence.lines = static_cast<double>(scene.text.lines.size());
    evidence.span =
        std::max(0.0, double{std::min((right - left) / width, (bottom - top) / height)});
    evidence.spread = static_cast<double>(std::ranges::count(hasPrint, true)) / (kParts * kParts);
    evidence.runsOut = partRunningOut(scene.text.lines, size);
    evidence.inkPart = scene.text.inkPart;
    evidence.parallel = parallelPart(scene.text.lines);
    const auto edges = std::ranges::count_if(scene.edges.points, [&](const EdgePoint& point) {
        return scene.text.print(cvRound(point.position.y), cvRound(point.position.x)) == 0;
    });
    evidence.clutter = static_cast<double>(edges) / size.area();
    return evidence;
}

std::vector<OutlineCandidate> FullPageFinder::find(const Scene& scene) const {
    const FullPageEvidence e = weighFullPage(scene);
    const double layout = rising(e.lines, 3, 9) * rising(e.strokes, 20, 80) *
                          rising(e.span, 0.3, 0.5) * rising(e.spread, 0.25, 0.45) *
                          rising(e.inkPart, 0.15, 0.4) * rising(e.parallel, 0.6, 0.85);
    const double texture = rising(e.runsOut, 0.3, 0.7);
    const double clutter = rising(e.clutter, 0.08, 0.13);
    const double confidence = kMostConfidence * layout * (1.0 - texture) * (1.0 - clutter);
    const cv::Size size = scene.picture.size();
    const auto width = static_cast<float>(size.width);
    const auto height = static_cast<float>(size.height);
    const Quad whole{cv::Point2f{0.0f, 0.0f}, {width, 0.0f}, {width, height}, {0.0f, height}};
    return {{whole, confidence, 1.0}};
}

}  // namespace kestrelid::vision
