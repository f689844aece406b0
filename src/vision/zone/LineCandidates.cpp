#include "vision/zone/LineCandidates.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

namespace kestrelid::vision {
namespace {

constexpr double kSteepest = 0.2;        // rise over run
constexpr double kShortest = 0.2;        // of the picture's width
constexpr double kLeastElongated = 9.0;  // length over height

// About the height of a character, in pixels. Larger print is looked for in a reduced picture.
constexpr int kSize = 7;
constexpr double kReduction = 0.64;
constexpr int kReductions = 3;

// Neighbouring columns hardly differ once they are smoothed: every fourth is looked at.
constexpr double kColumns = 4.0;

// Print is where much changes along the row, more than around it.
struct Contrast {
    float overSurroundings;
    float least;
};
constexpr std::array<Contrast, 2> kContrasts{{{1.25f, 3.5f}, {1.7f, 5.5f}}};

// What changes from pixel to pixel is kept in 8 bits as a quarter of it.
constexpr double kShrunk = 4.0;

int odd(double value) {
    return static_cast<int>(value) | 1;
}

cv::Mat box(double width, double height) {
    return cv::getStructuringElement(cv::MORPH_RECT,
                                     {std::max(1, cvRound(width)), std::max(1, cvRound(height))});
}

// Least squares: value = slope * x + offset.
struct Line {
    double slope = 0.0;
    double offset = 0.0;

    [[nodiscard]] double at(double x) const { return slope * x + offset; }
};

Line fitted(std::span<const cv::Point2d> points) {
    cv::Point2d mean;
    for (const cv::Point2d& point : points)
        mean += point / static_cast<double>(points.size());
    double across = 0.0;
    double along = 1e-9;
    for (const cv::Point2d& point : points) {
        across += (point.x - mean.x) * (point.y - mean.y);
        along += (point.x - mean.x) * (point.x - mean.x);
    }
    const double slope = across / along;
    return {slope, mean.y - slope * mean.x};
}

// The middle line of a component, without the columns where a neighbour hangs on to it.
std::optional<Baseline> middleOf(const cv::Mat1i& labels, int label, const cv::Rect& bounds) {
    std::vector<cv::Point2d> middles;
    std::vector<int> heights;
    for (int x = bounds.x; x < bounds.x + bounds.width; ++x) {
        int count = 0;
        double sum = 0.0;
        for (int y = bounds.y; y < bounds.y + bounds.height; ++y) {
            if (labels(y, x) == label) {
                ++count;
                sum += y;
            }
        }
        if (count > 0) {
            middles.emplace_back(x, sum / count);
            heights.push_back(count);
        }
    }
    constexpr std::size_t kLeast = 5;  // columns
    if (middles.size() < kLeast)
        return std::nullopt;
    Line line = fitted(middles);
    std::vector<double> distances;
    for (const cv::Point2d& point : middles)
        distances.push_back(std::abs(point.y - line.at(point.x)));
    std::vector<double> sorted = distances;
    std::ranges::nth_element(sorted,
                             sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2));
    const double limit = std::max(1.5, 2.5 * sorted[sorted.size() / 2]);
    std::vector<cv::Point2d> near;
    for (std::size_t index = 0; index < middles.size(); ++index) {
        if (distances[index] < limit)
            near.push_back(middles[index]);
    }
    if (near.size() > kLeast)
        line = fitted(near);
    std::ranges::nth_element(heights,
                             heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 2));
    const double height = heights[heights.size() / 2];
    if (std::abs(line.slope) > kSteepest * kColumns ||
        bounds.width * kColumns < kLeastElongated * height)
        return std::nullopt;
    const double left = bounds.x;
    const double right = bounds.x + bounds.width;
    return Baseline{{left * kColumns, line.at(left)}, {right * kColumns, line.at(right)}};
}

// How much print runs along the rows, for each pixel of every fourth column.
cv::Mat1f activity(const cv::Mat1b& picture) {
    cv::Mat hat;
    cv::morphologyEx(picture, hat, cv::MORPH_BLACKHAT, box(kSize, kSize));
    cv::Mat change;
    cv::Sobel(hat, change, CV_16S, 1, 0, 3);
    cv::Mat strength;
    cv::convertScaleAbs(change, strength, 1.0 / kShrunk);
    cv::Mat1f smooth;
    cv::boxFilter(strength, smooth, CV_32F, {odd(2.2 * kSize), odd(0.5 * kSize)});
    cv::Mat1f columns;
    cv::resize(smooth, columns, {cvCeil(smooth.cols / kColumns), smooth.rows}, 0, 0,
               cv::INTER_NEAREST);
    return columns;
}

bool isSame(const Baseline& a, const Baseline& b, double size) {
    const cv::Point2d start = a.start - b.start;
    const cv::Point2d end = a.end - b.end;
    return std::max(std::abs(start.x), std::abs(end.x)) < 1.5 * size &&
           std::max(std::abs(start.y), std::abs(end.y)) < 0.45 * size;
}

void addLines(const cv::Mat1f& active, const cv::Mat1f& surroundings, const Contrast& contrast,
              double reduction, std::vector<Baseline>& found) {
    cv::Mat1f limit;
    cv::max(surroundings * contrast.overSurroundings, contrast.least, limit);
    cv::Mat1b mask;
    cv::compare(active, limit, mask, cv::CMP_GT);
    cv::morphologyEx(mask, mask, cv::MORPH_CLOSE, box(2.4 * kSize / kColumns, 1));
    cv::morphologyEx(mask, mask, cv::MORPH_OPEN, box(1.5 * kSize / kColumns, 0.35 * kSize));
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(mask, labels, stats, centroids, 4, CV_32S);
    for (int label = 1; label < count; ++label) {
        const cv::Rect bounds(stats(label, cv::CC_STAT_LEFT), stats(label, cv::CC_STAT_TOP),
                              stats(label, cv::CC_STAT_WIDTH), stats(label, cv::CC_STAT_HEIGHT));
        if (bounds.width < kShortest * mask.cols)
            continue;
        const auto line = middleOf(labels, label, bounds);
        if (!line)
            continue;
        const Baseline whole{line->start / reduction, line->end / reduction};
        if (std::ranges::none_of(found, [&](const Baseline& other) {
                return isSame(whole, other, kSize / reduction);
            }))
            found.push_back(whole);
    }
}

}  // namespace

std::vector<Baseline> lineCandidates(const cv::Mat1b& picture) {
    std::vector<Baseline> found;
    cv::Mat1b reduced = picture;
    double reduction = 1.0;
    for (int step = 0; step < kReductions; ++step) {
        const cv::Mat1f active = activity(reduced);
        cv::Mat1f surroundings;
        cv::blur(active, surroundings, {odd(9.0 * kSize / kColumns), odd(9.0 * kSize)});
        for (const Contrast& contrast : kContrasts)
            addLines(active, surroundings, contrast, reduction, found);
        cv::resize(reduced, reduced, {}, kReduction, kReduction, cv::INTER_LINEAR);
        reduction *= kReduction;
    }
    std::ranges::stable_sort(
        found, [](const Baseline& a, const Baseline& b) { return a.length() > b.length(); });
    return found;
}

}  // namespace kestrelid::vision
