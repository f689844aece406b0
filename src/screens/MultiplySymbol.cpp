#include "screens/MultiplySymbol.h"

#include <QPainter>

namespace kestrelid::screens {

namespace {

constexpr qreal kStrokeWidth = 1.4;  // points

}  // namespace

MultiplySymbol::MultiplySymbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &MultiplySymbol::colorChanged, this, [this] { update(); });
}

void MultiplySymbol::paint(QPainter* painter) {
    constexpr qreal inset = kStrokeWidth / 2.0;
    const QRectF box = boundingRect().adjusted(inset, inset, -inset, -inset);
    painter->setPen(QPen(color_, kStrokeWidth, Qt::SolidLine, Qt::RoundCap));
    painter->drawLine(box.topLeft(), box.bottomRight());
    painter->drawLine(box.topRight(), box.bottomLeft());
}

}  // namespace kestrelid::screens
