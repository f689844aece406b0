#include "screens/SymbolIcon.h"

#include <algorithm>
#include <initializer_list>
#include <QPainter>
#include <QPainterPath>
#include <QQmlInfo>

namespace kestrelid::screens {

namespace {

// Symbols are drawn in a square of this side.
constexpr qreal kSide = 24.0;
constexpr qreal kStrokeWidth = 1.9;
constexpr qreal kDot = 0.1;  // a line so short that its round ends make a dot

void addLine(QPainterPath& path, std::initializer_list<QPointF> points) {
    path.moveTo(*points.begin());
    for (const QPointF& point : points)
        path.lineTo(point);
}

void addArc(QPainterPath& path, const QRectF& circle, qreal begin, qreal sweep) {
    path.arcMoveTo(circle, begin);
    path.arcTo(circle, begin, sweep);
}

void addCamera(QPainterPath& path) {
    path.moveTo(4.5, 6.5);
    path.lineTo(7.2, 6.5);
    path.lineTo(9.0, 4.0);
    path.lineTo(15.0, 4.0);
    path.lineTo(16.8, 6.5);
    path.lineTo(19.5, 6.5);
    path.quadTo(22.0, 6.5, 22.0, 9.0);
    path.lineTo(22.0, 17.5);
    path.quadTo(22.0, 20.0, 19.5, 20.0);
    path.lineTo(4.5, 20.0);
    path.quadTo(2.0, 20.0, 2.0, 17.5);
    path.lineTo(2.0, 9.0);
    path.quadTo(2.0, 6.5, 4.5, 6.5);
}

void addTorch(QPainterPath& path) {
    addLine(path, {{7, 2.5},
                   {17, 2.5},
                   {17, 6.5},
                   {14.5, 10},
                   {14.5, 21.5},
                   {9.5, 21.5},
                   {9.5, 10},
                   {7, 6.5},
                   {7, 2.5}});
    addLine(path, {{7, 6.5}, {17, 6.5}});
    addLine(path, {{12, 13}, {12, 15.5}});
}

void addSwitchCamera(QPainterPath& path) {
    addCamera(path);
    const QRectF circle(8.2, 9.2, 7.6, 7.6);
    addArc(path, circle, 160, -130);
    addArc(path, circle, 340, -130);
    addLine(path, {{15.9, 8.8}, {15.4, 11.3}, {12.9, 10.8}});
    addLine(path, {{8.1, 17.2}, {8.6, 14.7}, {11.1, 15.2}});
}

void addPicture(QPainterPath& path) {
    path.addRoundedRect(QRectF(2.5, 4, 19, 16), 2.5, 2.5);
    path.addEllipse(QPointF(8, 9), 1.7, 1.7);
    addLine(path, {{3, 18.5}, {9, 13.2}, {12.3, 16}, {15.8, 12.2}, {21, 17}});
}

void addAgain(QPainterPath& path) {
    addArc(path, QRectF(4, 4.5, 16, 16), 60, -300);
    addLine(path, {{17.3, 1.8}, {16.3, 5.7}, {12.3, 4.8}});
}

void addWarning(QPainterPath& path) {
    addLine(path, {{12, 3.5}, {22, 20.5}, {2, 20.5}, {12, 3.5}});
    path.closeSubpath();
    addLine(path, {{12, 9.8}, {12, 14.2}});
    addLine(path, {{12, 17.4}, {12, 17.4 + kDot}});
}

struct Symbol {
    const char* name;
    void (*add)(QPainterPath& path);
};

constexpr Symbol kSymbols[] = {
    {"torch", addTorch},
    {"switchCamera", addSwitchCamera},
    {"picture", addPicture},
    {"plus",
     [](QPainterPath& path) {
         addLine(path, {{12, 4.5}, {12, 19.5}});
         addLine(path, {{4.5, 12}, {19.5, 12}});
     }},
    {"minus",
     [](QPainterPath& path) {
         addLine(path, {{4.5, 12}, {19.5, 12}});
     }},
    {"again", addAgain},
    {"warning", addWarning},
    {"check",
     [](QPainterPath& path) {
         addLine(path, {{4, 12.8}, {9.5, 18.3}, {20, 6.3}});
     }},
    {"cross",
     [](QPainterPath& path) {
         addLine(path, {{5.5, 5.5}, {18.5, 18.5}});
         addLine(path, {{18.5, 5.5}, {5.5, 18.5}});
     }},
    {"camera",
     [](QPainterPath& path) {
         addCamera(path);
         path.addEllipse(QPointF(12, 13), 4, 4);
     }},
    {"back",
     [](QPainterPath& path) {
         addLine(path, {{15.5, 4.5}, {8, 12}, {15.5, 19.5}});
     }},
    {"details",
     [](QPainterPath& path) {
         addLine(path, {{4.5, 8.5}, {12, 16}, {19.5, 8.5}});
     }},
};

const Symbol* symbolCalled(const QString& name) {
    const auto* found =
        std::find_if(std::begin(kSymbols), std::end(kSymbols),
                     [&](const Symbol& symbol) { return name == QLatin1String(symbol.name); });
    return found == std::end(kSymbols) ? nullptr : found;
}

}  // namespace

SymbolIcon::SymbolIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    for (const auto changed :
         {&SymbolIcon::symbolChanged, &SymbolIcon::colorChanged, &SymbolIcon::mirroredChanged})
        connect(this, changed, this, [this] { update(); });
}

void SymbolIcon::setSymbol(const QString& symbol) {
    if (symbol == symbol_)
        return;
    symbol_ = symbol;
    if (!symbol.isEmpty() && !symbolCalled(symbol))
        qmlWarning(this) << "there is no symbol " << symbol;
    emit symbolChanged();
}

void SymbolIcon::paint(QPainter* painter) {
    const Symbol* symbol = symbolCalled(symbol_);
    if (!symbol)
        return;
    const QRectF box = boundingRect();
    const qreal scale = std::min(box.width(), box.height()) / kSide;
    painter->translate(box.center());
    painter->scale(isMirrored_ ? -scale : scale, scale);
    painter->translate(-kSide / 2.0, -kSide / 2.0);
    painter->setPen(QPen(color_, kStrokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    QPainterPath path;
    symbol->add(path);
    painter->drawPath(path);
}

}  // namespace kestrelid::screens
