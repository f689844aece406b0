#pragma once

#include <kestrelid/NormalizedGeometry.h>

#include <array>
#include <utility>

namespace kestrelid::base {

// The corners of the whole picture.
inline constexpr std::array<NormalizedPoint, 4> kWholePicture{
    {{0.0, 1.0}, {1.0, 1.0}, {1.0, 0.0}, {0.0, 0.0}}};

// The columns of a row of a picture that lie inside the quadrilateral: from, and up to but not
// including. The row counts from the top; where it misses the quadrilateral, from exceeds up to.
[[nodiscard]] std::pair<int, int> columnsInside(const std::array<NormalizedPoint, 4>& corners,
                                                int row, int width, int height);

}  // namespace kestrelid::base
