#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::scanner {

// A ring that fills clockwise from the top, inside the item's edges.
class CaptureRing : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(qreal progress MEMBER progress_ NOTIFY inputChanged)  // 0 to 1
    Q_PROPERTY(qreal lineWidth MEMBER lineWidth_ NOTIFY inputChanged)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY inputChanged)
    QML_ELEMENT

public:
    explicit CaptureRing(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

signals:
    void inputChanged();

private:
    qreal progress_ = 0.0;
    qreal lineWidth_ = 5.0;
    QColor color_ = Qt::white;
};

}  // namespace kestrelid::scanner
