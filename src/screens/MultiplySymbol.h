#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::screens {

// Two diagonal strokes that fill the item.
class MultiplySymbol : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY colorChanged)
    QML_ELEMENT

public:
    explicit MultiplySymbol(QQuickItem* parent = nullptr);

    void paint(QPainter* painter) override;

signals:
    void colorChanged();

private:
    QColor color_ = Qt::black;
};

}  // namespace kestrelid::screens
