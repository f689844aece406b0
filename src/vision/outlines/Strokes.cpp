#include "vision/outlines/Strokes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

// As parts of the picture's longest side.
constexpr double kNeighbourhood = 1.0 / 26;   // over which paper is even
constexpr double kLongestStroke = 1.0 / 2.5;  // letters touch each other when they are small

double noiseOf(const cv::Mat1s& darkness) {
    std::array<int, 256> histogram{};
    for (int y = 0; y < darkness.rows; ++y) {
        for (int x = 0; x < darkness.cols; ++x) {
            ++histogram[static_cast<std::size_t>(std::min(std::abs(int{darkness(y, x)}), 255))];
        }
    }
    auto left = static_cast<std::ptrdiff_t>(darkness.total() / 2);
    std::size_t median = 0;
    while (median < 255 && (left -= histogram[median]) > 0) {
        ++median;
    }
    return static_cast<double>(median) / 0.6745;  // of a normal distribution
}

// Strokes darker than the paper around them.
cv::Mat1b inkOf(const cv::Mat& luma, int longest) {
    const int window = std::max(7, static_cast<int>(longest * kNeighbourhood) | 1);
    cv::Mat around;
    cv::boxFilter(luma, around, -1, {window, window});
    cv::Mat1s darkness;
    cv::subtract(around, luma, darkness, cv::noArray(), CV_16S);
    const double texture = 2.5 * noiseOf(darkness);
    cv::Mat1b ink(luma.size());
    for (int y = 0; y < luma.rows; ++y) {
        const auto* mean = around.ptr<std::uint8_t>(y);
        for (int x = 0; x < luma.cols; ++x) {
            // Even on a strongly textured desk print on a page is about this much darker than its
            // paper.
            const double least = std::max({7.0, 0.10 * mean[x], std::min(texture, 0.27 * mean[x])});
            ink(y, x) = darkness(y, x) > least ? 255 : 0;
        }
    }
    return ink;
}

}  // namespace

cv::RotatedRect Piece::box() const {
    const double mx = x / pixels;
    const double my = y / pixels;
    const double varX = xx / pixels - mx * mx;
    const double varY = yy / pixels - my * my;
    const double shared = xy / pixels - mx * my;
    const double half = std::hypot(0.5 * (varX - varY), shared);
    const double mean = 0.5 * (varX + varY);
    const double angle = 0.5 * std::atan2(2.0 * shared, varX - varY);
    const auto side = [](double variance) {
        return static_cast<float>(std::sqrt(12.0 * std::max(variance, 1.0 / 12.0)));
    };
    return {{static_cast<float>(mx), static_cast<float>(my)},
            {side(mean + half), side(mean - half)},
            static_cast<float>(angle * 180.0 / CV_PI)};
}

Strokes findStrokes(const cv::Mat& luma) {
    const int longest = std::max(luma.cols, luma.rows);
    const cv::Mat1b ink = inkOf(luma, longest);
    Strokes strokes;
    const auto count =
        static_cast<std::size_t>(cv::connectedComponents(ink, strokes.labels, 8, CV_32S));
    std::vector<Piece> pieces(count);
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            if (const int label = strokes.labels(y, x); label != 0) {
                pieces[static_cast<std::size_t>(label)].add(x, y);
                strokes.allPixels += 1.0;
            }
        }
    }
    strokes.boxes.resize(count);
    strokes.kept.assign(count, 0);
    for (std::size_t i = 1; i < count; ++i) {
        const cv::RotatedRect box = pieces[i].box();
        strokes.boxes[i] = box;
        const bool isRule = box.size.height <= 2.0f && box.size.width > longest * kShortestTextLine;
        strokes.kept[i] = pieces[i].pixels >= 3 && !isRule &&
                          box.size.height <= longest * kTallestLetter &&
                          box.size.width <= longest * kLongestStroke;
    }
    return strokes;
}

}  // namespace kestrelid::vision
