#include "scanner/CornerCover.h"

#include "screens/ContinuousCorner.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace kestrelid::scanner {

CornerCover::CornerCover(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &CornerCover::inputChanged, this, &CornerCover::place);
}

void CornerCover::place() {
    const qreal side = std::ceil(screens::kContinuousCornerExtent * radius_);
    const QSizeF size = QSizeF(side, side).boundedTo(frameSize_);
    const bool isRight = corner_ == 1 || corner_ == 2;
    const bool isBottom = corner_ == 2 || corner_ == 3;
    setPosition({isRight ? frameSize_.width() - size.width() : 0.0,
                 isBottom ? frameSize_.height() - size.height() : 0.0});
    setSize(size);
    update();
}

void CornerCover::paint(QPainter* painter) {
    const QRectF frame(-position(), frameSize_);
    QPainterPath outside;
    // Beyond the item's own edges too, so that no line of the picture shines through there.
    outside.addRect(frame.adjusted(-1.0, -1.0, 1.0, 1.0));
    outside.addPath(
        screens::continuousRoundedRect(frame, radius_));  // a hole, by the odd-even rule
    painter->fillPath(outside, color_);
}

}  // namespace kestrelid::scanner
