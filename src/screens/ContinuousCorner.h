#pragma once

#include <QPainterPath>
#include <QRectF>

namespace kestrelid::screens {

// How far from the corner, in radii, the curve of a continuous corner begins on each edge. Unlike a
// circle's arc its curvature grows from zero.
inline constexpr qreal kContinuousCornerExtent = 1.528665;

// A rectangle with continuous corners. The radius shrinks if half of the shorter side has no room
// for the curve.
[[nodiscard]] QPainterPath continuousRoundedRect(const QRectF& rect, qreal radius);

}  // namespace kestrelid::screens
