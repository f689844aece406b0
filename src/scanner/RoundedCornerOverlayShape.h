#pragma once

#include <array>
#include <cstdint>

namespace kestrelid::scanner {

// Points, y growing downwards.
struct ShapePoint {
    double x = 0.0;
    double y = 0.0;

    friend bool operator==(const ShapePoint&, const ShapePoint&) = default;
};

struct ShapeRect {
    double minX = 0.0;
    double minY = 0.0;
    double maxX = 0.0;
    double maxY = 0.0;
};

struct PathElement {
    enum class Kind : std::uint8_t { move, line, quadraticCurve };

    Kind kind = Kind::move;
    ShapePoint end;
    ShapePoint control;  // of a curve

    friend bool operator==(const PathElement&, const PathElement&) = default;
};

// Open: two arms and the bend between them.
using CornerPath = std::array<PathElement, 4>;

// Four brackets, one at each corner of a rectangle. Lengths that do not fit the rectangle are taken
// as they are: arms then run backwards or overlap.
struct RoundedCornerOverlayShape {
    double lineLength = 0.0;    // from the corner, along each edge, to the end of an arm
    double cornerRadius = 0.0;  // from the corner, along each edge, to the start of the bend

    // From the top left, clockwise, as is each bracket.
    [[nodiscard]] constexpr std::array<CornerPath, 4> path(const ShapeRect& rect) const {
        const auto [minX, minY, maxX, maxY] = rect;
        const double l = lineLength;
        const double r = cornerRadius;
        return {{
            corner({minX, minY + l}, {minX, minY + r}, {minX, minY}, {minX + r, minY},
                   {minX + l, minY}),
            corner({maxX - l, minY}, {maxX - r, minY}, {maxX, minY}, {maxX, minY + r},
                   {maxX, minY + l}),
            corner({maxX, maxY - l}, {maxX, maxY - r}, {maxX, maxY}, {maxX - r, maxY},
                   {maxX - l, maxY}),
            corner({minX + l, maxY}, {minX + r, maxY}, {minX, maxY}, {minX, maxY - r},
                   {minX, maxY - l}),
        }};
    }

private:
    static constexpr CornerPath corner(ShapePoint start, ShapePoint bendStart, ShapePoint control,
                                       ShapePoint bendEnd, ShapePoint end) {
        using enum PathElement::Kind;
        return {{{move, start, {}},
                 {line, bendStart, {}},
                 {quadraticCurve, bendEnd, control},
                 {line, end, {}}}};
    }
};

}  // namespace kestrelid::scanner
