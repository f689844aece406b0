#include "screens/ContinuousCorner.h"

#include <algorithm>
#include <QTransform>

namespace kestrelid::screens {

namespace {

// A top right corner in radii: distances from the corner, to the left and down.
struct Point {
    qreal left;
    qreal down;
};

struct Curve {
    Point control1;
    Point control2;
    Point end;
};

// Symmetric about the diagonal; begins kContinuousCornerExtent left of the corner. The middle curve
// is close to a circle of the radius.
constexpr Curve kCorner[] = {
    {{1.08849296, 0.0}, {0.86840694, 0.0}, {0.63149379, 0.07491139}},
    {{0.37282383, 0.16905956}, {0.16905956, 0.37282383}, {0.07491139, 0.63149379}},
    {{0.0, 0.86840694}, {0.0, 1.08849296}, {0.0, kContinuousCornerExtent}},
};

}  // namespace

QPainterPath continuousRoundedRect(const QRectF& rect, qreal radius) {
    const qreal room = std::min(rect.width(), rect.height()) / 2.0;
    const qreal unit = std::min(radius, room / kContinuousCornerExtent);
    QPainterPath path;
    path.moveTo(rect.topRight() - QPointF(kContinuousCornerExtent * unit, 0.0));
    const QPointF corners[] = {rect.topRight(), rect.bottomRight(), rect.bottomLeft(),
                               rect.topLeft()};
    for (int corner = 0; corner < 4; ++corner) {
        const QPointF& at = corners[corner];
        // Quarter turns of the top right corner, clockwise.
        const QTransform turn = QTransform::fromTranslate(at.x(), at.y()).rotate(90.0 * corner);
        const auto place = [&](const Point& point) {
            return turn.map(QPointF(-point.left * unit, point.down * unit));
        };
        path.lineTo(place({kContinuousCornerExtent, 0.0}));
        for (const Curve& curve : kCorner)
            path.cubicTo(place(curve.control1), place(curve.control2), place(curve.end));
    }
    path.closeSubpath();
    return path;
}

}  // namespace kestrelid::screens
