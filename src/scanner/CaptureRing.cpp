#include "scanner/CaptureRing.h"

#include <algorithm>
#include <QPainter>

namespace kestrelid::scanner {

CaptureRing::CaptureRing(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &CaptureRing::inputChanged, this, [this] { update(); });
}

void CaptureRing::paint(QPainter* painter) {
    constexpr int kTop = 90 * 16;  // sixteenths of a degree, counter-clockwise from the right
    constexpr int kTurn = 360 * 16;
    const qreal inset = lineWidth_ / 2.0;
    painter->setPen(QPen(color_, lineWidth_, Qt::SolidLine, Qt::FlatCap));
    painter->drawArc(boundingRect().adjusted(inset, inset, -inset, -inset), kTop,
                     -qRound(std::clamp(progress_, 0.0, 1.0) * kTurn));
}

}  // namespace kestrelid::scanner
