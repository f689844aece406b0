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

enum class Direction { across, down, rising, falling };

cv::Mat1b bridgeAlong(Direction direction, int gap) {
    switch (direction) {
    case Direction::across:
        return cv::Mat1b(1, gap, std::uint8_t{1});
    case Direction::down:
        return cv::Mat1b(gap, 1, std::uint8_t{1});
    case Direction::rising:
    case Direction::falling:
        break;
    }
    const int side = gap * 5 / 7 | 1;
    cv::Mat1b bridge(side, side, std::uint8_t{0});
    for (int i = 0; i < side; ++i) {
        bridge(i, direction == Direction::falling ? i : side - 1 - i) = 1;
    }
    return bridge;
}

// Second moments of a connected piece.
struct Piece {
    double pixels = 0, x = 0, y = 0, xx = 0, xy = 0, yy = 0;

    void add(int column, int row) {
        pixels += 1;
        x += column;
        y += row;
        xx += double(column) * column;
        xy += double(column) * row;
        yy += double(row) * row;
    }

    // The rectangle with the same moments, its width the longer side.
    [[nodiscard]] cv::RotatedRect box() const {
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
};

// Ink in pieces of the size of letters or of words run together.
struct Strokes {
    cv::Mat1i labels;                    // 0: none
    std::vector<cv::RotatedRect> boxes;  // by label
    std::vector<std::uint8_t> kept;      // by label
    double allPixels = 0.0;
};

Strokes strokesOf(const cv::Mat1b& ink, int longest) {
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
        const bool isRule = box.size.height <= 2.0f && box.size.width > longest * kShortestLine;
        strokes.kept[i] = pieces[i].pixels >= 3 && !isRule &&
                          box.size.height <= longest * kTallestLetter &&
                          box.size.width <= longest * kLongestStroke;
    }
    return strokes;
}

double angleOf(Direction direction) {
    switch (direction) {
    case Direction::across:
        return 0.0;
    case Direction::down:
        return 90.0;
    case Direction::rising:
        return -45.0;
    case Direction::falling:
        break;
    }
    return 45.0;
}

// The kept strokes, without those that stand tall across the direction: letters touch along a line,
// grain and combs run across it.
cv::Mat1b strokesAlong(const Strokes& strokes, int longest, Direction direction) {
    std::vector<std::uint8_t> values(strokes.kept.size(), 0);
    for (std::size_t i = 1; i < values.size(); ++i) {
        const cv::RotatedRect& box = strokes.boxes[i];
        const bool isTall =
            box.size.width > 3.0f * box.size.height &&
            box.size.width > longest * kTallestLetter / 2.5 &&
            std::abs(std::cos((box.angle - angleOf(direction)) * CV_PI / 180.0)) < 0.6;
        values[i] = strokes.kept[i] != 0 && !isTall ? 255 : 0;
    }
    cv::Mat1b mask(strokes.labels.size());
    for (int y = 0; y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            mask(y, x) = values[static_cast<std::size_t>(strokes.labels(y, x))];
        }
    }
    return mask;
}

struct Lines {
    std::vector<TextLine> lines;
    double pixels = 0.0;
};

struct Ink {
    double pixels = 0.0;
    int runs = 0;  // uninterrupted stretches along the direction
};

// Joins strokes along one direction; what comes out long and thin, with gaps between its strokes,
// is a line. Adds the lines' strokes to print.
Lines joinedAlong(const Strokes& strokes, int longest, Direction direction, cv::Mat1b& print) {
    const int gap = std::max(3, static_cast<int>(longest * kWidestGap) | 1);
    const cv::Mat1b mask = strokesAlong(strokes, longest, direction);
    cv::Mat1b joined;
    cv::morphologyEx(mask, joined, cv::MORPH_CLOSE, bridgeAlong(direction, gap));
    cv::Mat1i labels;
    const int count = cv::connectedComponents(joined, labels, 8, CV_32S);

    const bool across = direction != Direction::down;
    std::vector<Piece> pieces(static_cast<std::size_t>(count));
    std::vector<Ink> inks(pieces.size());
    for (int y = 0; y < joined.rows; ++y) {
        for (int x = 0; x < joined.cols; ++x) {
            const int label = labels(y, x);
            if (label == 0) {
                continue;
            }
            pieces[static_cast<std::size_t>(label)].add(x, y);
            if (mask(y, x) != 0) {
                Ink& ink = inks[static_cast<std::size_t>(label)];
                ink.pixels += 1.0;
                ink.runs += across ? x == 0 || mask(y, x - 1) == 0 : y == 0 || mask(y - 1, x) == 0;
            }
        }
    }
    Lines result;
    std::vector<int> lineOf(static_cast<std::size_t>(count), -1);
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        const cv::RotatedRect box = pieces[i].box();
        const double meanRun = inks[i].pixels / std::max(inks[i].runs, 1);
        if (box.size.width >= longest * kShortestLine && box.size.width >= 4.0f * box.size.height &&
            box.size.height <= longest * kTallestLetter && meanRun <= 2.5 * box.size.height) {
            lineOf[i] = static_cast<int>(result.lines.size());
            result.pixels += inks[i].pixels;
            result.lines.push_back({.box = box, .glyphs = {}});
        }
    }
    for (int y = 0; y < joined.rows; ++y) {
        for (int x = 0; x < joined.cols; ++x) {
            if (mask(y, x) != 0 && lineOf[static_cast<std::size_t>(labels(y, x))] >= 0) {
                print(y, x) = 255;
            }
        }
    }
    for (std::size_t i = 1; i < strokes.boxes.size(); ++i) {
        const cv::Point2f centre = strokes.boxes[i].center;
        const int label = strokes.kept[i] != 0 ? labels(cvRound(centre.y), cvRound(centre.x)) : 0;
        const int line = lineOf[static_cast<std::size_t>(label)];
        if (label > 0 && line >= 0) {
            result.lines[static_cast<std::size_t>(line)].glyphs.push_back(centre);
        }
    }
    return result;
}

cv::Mat1b near(const cv::Mat1b& mask, int longest) {
    const int reach = std::max(3, longest / 64 | 1);
    cv::Mat1b grown;
    cv::dilate(mask, grown, cv::getStructuringElement(cv::MORPH_RECT, {reach, reach}));
    return grown;
}

}  // namespace

double partRunningOut(const std::vector<TextLine>& lines, cv::Size picture) {
    constexpr float kMargin = 0.015f;
    const auto width = static_cast<float>(picture.width);
    const auto height = static_cast<float>(picture.height);
    double all = 0.0;
    double out = 0.0;
    for (const TextLine& line : lines) {
        const cv::Rect2f box = line.box.boundingRect2f();
        const bool runsOut = box.x <= kMargin * width || box.y <= kMargin * height ||
                             box.br().x >= (1.0f - kMargin) * width ||
                             box.br().y >= (1.0f - kMargin) * height;
        all += line.box.size.width;
        out += runsOut ? line.box.size.width : 0.0f;
    }
    return all > 0.0 ? out / all : 0.0;
}

TextLayout findTextLayout(const WorkingPicture& picture) {
    const int longest = std::max(picture.luma.cols, picture.luma.rows);
    const Strokes strokes = strokesOf(inkOf(picture.luma, longest), longest);
    cv::Mat1b print(picture.size(), std::uint8_t{0});
    Lines across = joinedAlong(strokes, longest, Direction::across, print);
    Lines down = joinedAlong(strokes, longest, Direction::down, print);
    joinedAlong(strokes, longest, Direction::rising, print);
    joinedAlong(strokes, longest, Direction::falling, print);
    Lines& more = across.pixels >= down.pixels ? across : down;
    print = near(print, longest);
    std::vector<cv::Point2f> samples;
    const int step = std::max(1, longest / 100);
    for (int y = step / 2; y < print.rows; y += step) {
        for (int x = step / 2; x < print.cols; x += step) {
            if (print(y, x) != 0) {
                samples.emplace_back(static_cast<float>(x), static_cast<float>(y));
            }
        }
    }
    return {.lines = std::move(more.lines),
            .inkPart = more.pixels / std::max(strokes.allPixels, 1.0),
            .print = print,
            .samples = std::move(samples)};
}

}  // namespace kestrelid::opencv
