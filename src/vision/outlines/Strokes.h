#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace kestrelid::vision {

// Sizes as parts of the picture's longest side.
constexpr double kTallestLetter = 1.0 / 18;
constexpr double kShortestTextLine = 1.0 / 16;

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
    [[nodiscard]] cv::RotatedRect box() const;
};

// Pieces darker than the paper around them, those kept of the size of letters or of words run
// together.
struct Strokes {
    cv::Mat1i labels;                    // 0: none
    std::vector<cv::RotatedRect> boxes;  // by label
    std::vector<std::uint8_t> kept;      // by label
    double allPixels = 0.0;
};

[[nodiscard]] Strokes findStrokes(const cv::Mat& luma);

}  // namespace kestrelid::vision
