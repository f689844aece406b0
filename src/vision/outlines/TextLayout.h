#pragma once

#include "vision/outlines/WorkingPicture.h"

#include <opencv2/core.hpp>
#include <vector>

namespace kestrelid::vision {

// Something shaped like a line of print: dark strokes in a row, as seen at the working picture's
// size.
struct TextLine {
    cv::RotatedRect box;
    std::vector<cv::Point2f> glyphs;  // centres of its strokes
};

// The places that look like print. Nothing is read: a row of small keys or a comb can look like
// print.
struct TextLayout {
    std::vector<TextLine> lines;  // of the direction, across or down, that has more of them
    double inkPart = 0.0;         // of all dark strokes, by pixels, the part that lies in lines
    cv::Mat1b print;              // 255 near strokes that lie in lines of any direction
    std::vector<cv::Point2f> samples;  // of print, at even steps
};

// Of lines, by length, the part that runs out of a picture of that size. Print has margins; rows of
// keys, tiles and books go on beyond the picture.
[[nodiscard]] double partRunningOut(const std::vector<TextLine>& lines, cv::Size picture);

[[nodiscard]] TextLayout findTextLayout(const WorkingPicture& picture);

}  // namespace kestrelid::vision
