#include "scanner/CornerBracket.h"

#include "scanner/RoundedCornerOverlayShape.h"

#include <algorithm>
#include <QPainter>
#include <QPainterPath>

namespace kestrelid::scanner {

namespace {

// Units.
constexpr RoundedCornerOverlayShape kShape{.lineLength = 70.0, .cornerRadius = 25.0};
constexpr qreal kLineWidth = 4.0;
constexpr qreal kMiterLimit = 10.0;

QPainterPath painterPath(const CornerPath& corner) {
    const auto point = [](const ShapePoint& at) { return QPointF(at.x, at.y); };
    QPainterPath path;
    for (const PathElement& element : corner) {
        switch (element.kind) {
        case PathElement::Kind::move:
            path.moveTo(point(element.end));
            break;
        case PathElement::Kind::line:
            path.lineTo(point(element.end));
            break;
        case PathElement::Kind::quadraticCurve:
            path.quadTo(point(element.control), point(element.end));
            break;
        }
    }
    return path;
}

QPainterPath bracket(int corner, const QSizeF& frame, qreal unit) {
    const ShapeRect rect{.maxX = frame.width(), .maxY = frame.height()};
    const RoundedCornerOverlayShape shape{.lineLength = kShape.lineLength * unit,
                                          .cornerRadius = kShape.cornerRadius * unit};
    return painterPath(shape.path(rect).at(static_cast<std::size_t>(std::clamp(corner, 0, 3))));
}

}  // namespace

CornerBracket::CornerBracket(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &CornerBracket::geometryInputChanged, this, &CornerBracket::place);
    connect(this, &CornerBracket::colorChanged, this, [this] { update(); });
    place();
}

void CornerBracket::place() {
    const qreal reach = kLineWidth * unit_ / 2.0;
    const QRectF bounds = bracket(corner_, frameSize_, unit_)
                              .controlPointRect()
                              .adjusted(-reach, -reach, reach, reach)
                              .toAlignedRect();
    setPosition(bounds.topLeft());
    setSize(bounds.size());
    update();
}

void CornerBracket::paint(QPainter* painter) {
    QPen pen(color_, kLineWidth * unit_, Qt::SolidLine, Qt::FlatCap, Qt::SvgMiterJoin);
    pen.setMiterLimit(kMiterLimit);
    painter->translate(-position());
    painter->strokePath(bracket(corner_, frameSize_, unit_), pen);
}

}  // namespace kestrelid::scanner
