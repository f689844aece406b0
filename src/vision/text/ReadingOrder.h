#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace kestrelid::vision {

// A line on a page that stands upright: any unit, y growing downwards.
struct LineExtent {
    float centerX = 0.0f;
    float centerY = 0.0f;
    float width = 0.0f;
    float height = 0.0f;
};

// Indices of lines, rows from top to bottom and each row from left to right. A row may climb or
// fall slowly along its length, as on a page seen at an angle.
[[nodiscard]] std::vector<std::size_t> readingOrder(std::span<const LineExtent> lines);

}  // namespace kestrelid::vision
