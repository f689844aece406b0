#include "platform/vision/opencv/TextLayout.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace kestrelid::opencv {

namespace {

// Sizes as parts of the picture's longest side.
constexpr double kNeighbourhood = 1.0 / 26;  // over which paper is even
constexpr double kTallestLetter = 1.0 / 18;
constexpr double kLongestStroke = 1.0 / 2.5;  // letters touch each other when they are small
constexpr double kWidestGap = 1.0 / 40;       // between letters of a line
constexpr double kShortestLine = 1.0 / 16;

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
    const double floor = std::max(7.0, 2.5 * noiseOf(darkness));
    cv::Mat1b ink(luma.size());
    for (int y = 0; y < luma.rows; ++y) {
        const auto* mean = around.ptr<std::uint8_t>(y);
        for (int x = 0; x < luma.cols; ++x) {
            const double least = std::max(floor, 0.10 * mean[x]);
            ink(y, x) = darkness(y, x) > least ? 255 : 0;
        }
    }
    return ink;
}

struct Strokes {
    cv::Mat1b mask;
    std::vector<cv::Point2f> centres;
    double pixels = 0.0;
    double allPixels = 0.0;
};

// Ink in pieces of the size of letters or of words run together.
Strokes strokesOf(const cv::Mat1b& ink, int longest) {
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat1d centres;
    const int count = cv::connectedComponentsWithStats(ink, labels, stats, centres, 8, CV_32S);
    Strokes strokes;
    std::vector<std::uint8_t> keep(static_cast<std::size_t>(count), 0);
    for (int i = 1; i < count; ++i) {
        const int width = stats(i, cv::CC_STAT_WIDTH);
        const int height = stats(i, cv::CC_STAT_HEIGHT);
        const int pixels = stats(i, cv::CC_STAT_AREA);
        strokes.allPixels += pixels;
        const double fill = static_cast<double>(pixels) / (width * height);
        const bool isLetterSized = std::min(width, height) <= longest * kTallestLetter &&
                                   std::max(width, height) <= longest * kLongestStroke;
        const bool isRule = std::min(width, height) <= 2 && std::max(width, height) > longest / 16;
        if (pixels >= 3 && isLetterSized && !isRule && fill >= 0.12) {
            keep[static_cast<std::size_t>(i)] = 255;
            strokes.pixels += pixels;
            strokes.centres.emplace_back(static_cast<float>(centres(i, 0)),
                                         static_cast<float>(centres(i, 1)));
        }
    }
    strokes.mask.create(ink.size());
    for (int y = 0; y < ink.rows; ++y) {
        for (int x = 0; x < ink.cols; ++x) {
            strokes.mask(y, x) = keep[static_cast<std::size_t>(labels(y, x))];
        }
    }
    return strokes;
}

struct Lines {
    std::vector<TextLine> lines;
    double pixels = 0.0;
};

// Joins strokes along one direction; what comes out long and thin, with gaps between its strokes,
// is a line.
Lines joinedAlong(const Strokes& strokes, int longest, bool across) {
    const int gap = std::max(3, static_cast<int>(longest * kWidestGap) | 1);
    cv::Mat1b joined;
    cv::morphologyEx(
        strokes.mask, joined, cv::MORPH_CLOSE,
        cv::getStructuringElement(cv::MORPH_RECT, across ? cv::Size{gap, 1} : cv::Size{1, gap}));
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(joined, labels, stats, centroids, 8, CV_32S);

    struct Piece {
        double n = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;
        double ink = 0;
        int runs = 0;
    };
    std::vector<Piece> pieces(static_cast<std::size_t>(count));
    for (int y = 0; y < joined.rows; ++y) {
        for (int x = 0; x < joined.cols; ++x) {
            const int label = labels(y, x);
            if (label == 0) {
                continue;
            }
            Piece& piece = pieces[static_cast<std::size_t>(label)];
            piece.n += 1;
            piece.x += x;
            piece.y += y;
            piece.xx += double(x) * x;
            piece.xy += double(x) * y;
            piece.yy += double(y) * y;
            if (strokes.mask(y, x) != 0) {
                piece.ink += 1;
                const bool starts = across ? x == 0 || strokes.mask(y, x - 1) == 0
                                           : y == 0 || strokes.mask(y - 1, x) == 0;
                piece.runs += starts;
            }
        }
    }
    Lines result;
    std::vector<int> lineOf(static_cast<std::size_t>(count), -1);
    for (int i = 1; i < count; ++i) {
        const Piece& piece = pieces[static_cast<std::size_t>(i)];
        const double mx = piece.x / piece.n;
        const double my = piece.y / piece.n;
        const double xx = piece.xx / piece.n - mx * mx;
        const double xy = piece.xy / piece.n - mx * my;
        const double yy = piece.yy / piece.n - my * my;
        const double half = std::hypot(0.5 * (xx - yy), xy);
        // Sides of the rectangle with the same second moments.
        const double length = std::sqrt(12.0 * std::max(0.5 * (xx + yy) + half, 0.08));
        const double thickness = std::sqrt(12.0 * std::max(0.5 * (xx + yy) - half, 0.08));
        const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
        const bool alongJoin = (std::abs(std::cos(angle)) > 0.8) == across;
        const double meanRun = piece.ink / std::max(piece.runs, 1);
        if (length >= longest * kShortestLine && length >= 4.0 * thickness && alongJoin &&
            thickness <= longest * kTallestLetter && meanRun <= 2.5 * thickness) {
            lineOf[static_cast<std::size_t>(i)] = static_cast<int>(result.lines.size());
            result.pixels += piece.ink;
            result.lines.push_back(
                {.box = {{static_cast<float>(mx), static_cast<float>(my)},
                         {static_cast<float>(length), static_cast<float>(thickness)},
                         static_cast<float>(angle * 180.0 / CV_PI)},
                 .glyphs = {}});
        }
    }
    for (const cv::Point2f centre : strokes.centres) {
        const int label = labels(std::clamp(cvRound(centre.y), 0, labels.rows - 1),
                                 std::clamp(cvRound(centre.x), 0, labels.cols - 1));
        const int line = lineOf[static_cast<std::size_t>(label)];
        if (label > 0 && line >= 0) {
            result.lines[static_cast<std::size_t>(line)].glyphs.push_back(centre);
        }
    }
    return result;
}

}  // namespace

TextLayout findTextLayout(const WorkingPicture& picture) {
    const int longest = std::max(picture.luma.cols, picture.luma.rows);
    const Strokes strokes = strokesOf(inkOf(picture.luma, longest), longest);
    Lines across = joinedAlong(strokes, longest, true);
    Lines down = joinedAlong(strokes, longest, false);
    Lines& more = across.pixels >= down.pixels ? across : down;
    return {.lines = std::move(more.lines),
            .inkPart = more.pixels / std::max(strokes.allPixels, 1.0)};
}

}  // namespace kestrelid::opencv
