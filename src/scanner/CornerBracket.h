#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QRectF>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::scanner {

// One bracket of a frame. Each is an item of its own, so that the live picture between them is
// never blended with an overlay. Places itself; the line reaches 2 units beyond the frame.
class CornerBracket : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(
        int corner MEMBER corner_ NOTIFY geometryInputChanged)  // 0..3 from the top left, clockwise
    Q_PROPERTY(QSizeF frameSize MEMBER frameSize_ NOTIFY geometryInputChanged)
    Q_PROPERTY(qreal unit MEMBER unit_ NOTIFY geometryInputChanged)  // points to one as designed
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY colorChanged)
    QML_ELEMENT

public:
    explicit CornerBracket(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

signals:
    void geometryInputChanged();
    void colorChanged();

private:
    void place();

    int corner_ = 0;
    QSizeF frameSize_;
    qreal unit_ = 1.0;
    QColor color_ = Qt::white;
};

}  // namespace kestrelid::scanner
