#include "vision/outlines/TextLayout.h"

#include "vision/outlines/Strokes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

constexpr double kWidestGap = 1.0 / 40;  // between letters of a line, of the longest side

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

// Joins strokes along one direction; a long and thin result with gaps between its strokes is a
// line. Adds the lines' strokes to print.
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
        if (box.size.width >= longest * kShortestTextLine &&
            box.size.width >= 4.0f * box.size.height &&
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
    const Strokes strokes = findStrokes(picture.luma);
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

}  // namespace kestrelid::vision
