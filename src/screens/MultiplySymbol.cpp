#include "screens/MultiplySymbol.h"

#include <QPainter>

namespace kestrelid::screens {

namespace {

// Points, as designed.
constexpr qreal kStrokeWidth = 1.4;
constexpr qreal kSide = 11.0;

}  // namespace

MultiplySymbol::MultiplySymbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &MultiplySymbol::colorChanged, this, [this] { update(); });
}

void MultiplySymbol::paint(QPainter* painter) {
    const qreal stroke = kStrokeWidth * width() / kSide;
    const qreal inset = stroke / 2.0;
    const QRectF box = boundingRect().adjusted(inset, inset, -inset, -inset);
    painter->setPen(QPen(color_, stroke, Qt::SolidLine, Qt::RoundCap));
    painter->drawLine(box.topLeft(), box.bottomRight());
    painter->drawLine(box.topRight(), box.bottomLeft());
}

}  // namespace kestrelid::screens
