#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::scanner {

// Paints over the area outside a continuous corner, and so rounds the rectangle beneath. Not every
// renderer can clip, but each can paint.
class CornerCover : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(int corner MEMBER corner_ NOTIFY inputChanged)  // 0..3 from the top left, clockwise
    Q_PROPERTY(QSizeF frameSize MEMBER frameSize_ NOTIFY inputChanged)
    Q_PROPERTY(qreal radius MEMBER radius_ NOTIFY inputChanged)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY inputChanged)
    QML_ELEMENT

public:
    explicit CornerCover(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

signals:
    void inputChanged();

private:
    void place();

    int corner_ = 0;
    QSizeF frameSize_;
    qreal radius_ = 0.0;
    QColor color_ = Qt::black;
};

}  // namespace kestrelid::scanner
