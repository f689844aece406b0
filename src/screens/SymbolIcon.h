#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::screens {

// A symbol of strokes with round ends, as large as fits in the middle of the item. symbol: "torch",
// "switchCamera", "picture", "plus", "minus", "again", "warning", "check", "cross", "camera",
// "back" or "details"; empty shows nothing.
class SymbolIcon : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QString symbol READ symbol WRITE setSymbol NOTIFY symbolChanged)
    Q_PROPERTY(QColor color MEMBER color_ NOTIFY colorChanged)
    // Left and right swapped, for what points in the direction of reading.
    Q_PROPERTY(bool isMirrored MEMBER isMirrored_ NOTIFY mirroredChanged)
    QML_ELEMENT

public:
    explicit SymbolIcon(QQuickItem* parent = nullptr);

    [[nodiscard]] QString symbol() const { return symbol_; }
    void setSymbol(const QString& symbol);

    void paint(QPainter* painter) override;

signals:
    void symbolChanged();
    void colorChanged();
    void mirroredChanged();

private:
    QString symbol_;
    QColor color_ = Qt::black;
    bool isMirrored_ = false;
};

}  // namespace kestrelid::screens
