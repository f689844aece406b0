#pragma once

namespace kestrelid {

/// Relative to the bitmap: 0 to 1, origin at the lower left, y growing upwards.
struct NormalizedPoint {
    double x = 0.0;
    double y = 0.0;

    friend bool operator==(const NormalizedPoint&, const NormalizedPoint&) = default;
};

/// Relative to the bitmap: 0 to 1, origin at the lower left corner of both bitmap and rectangle.
struct NormalizedRect {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;

    /// Fraction of the bitmap's area.
    [[nodiscard]] double area() const noexcept { return width * height; }

    friend bool operator==(const NormalizedRect&, const NormalizedRect&) = default;
};

}  // namespace kestrelid
