#pragma once

#include <algorithm>
#include <QRectF>
#include <QSizeF>

namespace kestrelid::scanner {

// The middle part of a picture that fills bounds with its aspect ratio kept. Empty if either is
// empty.
[[nodiscard]] inline QRectF aspectFillCrop(const QSizeF& picture, const QSizeF& bounds) {
    if (picture.isEmpty() || bounds.isEmpty())
        return {};
    const qreal scale =
        std::max(bounds.width() / picture.width(), bounds.height() / picture.height());
    const QSizeF shown = bounds / scale;
    return {
        QPointF((picture.width() - shown.width()) / 2.0, (picture.height() - shown.height()) / 2.0),
        shown};
}

}  // namespace kestrelid::scanner
