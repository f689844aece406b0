#pragma once

#include <kestrelid/VisionServices.h>

#include <array>
#include <cstddef>
#include <QPointF>

namespace kestrelid::scanner {

// In shares of the frame as the sensor sees it, from its top left, y growing downwards. Clockwise.
using OutlineCorners = std::array<QPointF, 4>;

[[nodiscard]] inline OutlineCorners cornersOf(const RectangleObservation& outline) {
    OutlineCorners corners;
    for (std::size_t index = 0; index < corners.size(); ++index)
        corners[index] = {outline.corners[index].x, 1.0 - outline.corners[index].y};
    return corners;
}

// The same corners, but beginning with the one that makes the shortest way from where they were: a
// page that is turned gets another "top left", and the outline would fold on its way there.
[[nodiscard]] inline OutlineCorners turnedTowards(const OutlineCorners& before,
                                                  const OutlineCorners& now) {
    const auto turned = [&](std::size_t turn) {
        OutlineCorners corners;
        for (std::size_t index = 0; index < corners.size(); ++index)
            corners[index] = now[(index + turn) % corners.size()];
        return corners;
    };
    const auto way = [&](const OutlineCorners& corners) {
        double sum = 0.0;
        for (std::size_t index = 0; index < corners.size(); ++index) {
            const QPointF step = corners[index] - before[index];
            sum += QPointF::dotProduct(step, step);
        }
        return sum;
    };
    OutlineCorners nearest = now;
    for (std::size_t turn = 1; turn < now.size(); ++turn) {
        if (way(turned(turn)) < way(nearest))
            nearest = turned(turn);
    }
    return nearest;
}

}  // namespace kestrelid::scanner
