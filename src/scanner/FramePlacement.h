#pragma once

#include "scanner/AspectFill.h"
#include "screens/UprightTransform.h"

#include <kestrelid/Image.h>

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QTransform>

namespace kestrelid::scanner {

// What decides where the parts of a frame are seen.
struct FrameShape {
    QSizeF stored;  // pixels, as the sensor lies
    Orientation orientation = Orientation::up;
    bool isMirrored = false;  // once it is turned

    friend bool operator==(const FrameShape&, const FrameShape&) = default;
};

// A frame in an item.
struct FramePlacement {
    QRectF source;         // what of the frame is seen, in its pixels
    QSizeF stored;         // where that goes, in points, as the sensor lies
    QTransform transform;  // from there to the item
};

// isWhole: all of the frame, in the middle of bounds; otherwise it fills them, and is cut.
[[nodiscard]] inline FramePlacement placeFrame(const FrameShape& shape, const QSizeF& bounds,
                                               bool isWhole) {
    QRectF target(QPointF(), bounds);
    if (isWhole && !shape.stored.isEmpty()) {
        target.setSize(screens::uprightSize(shape.orientation, shape.stored)
                           .scaled(bounds, Qt::KeepAspectRatio));
        target.moveCenter(QRectF(QPointF(), bounds).center());
    }
    const QSizeF stored = screens::uprightSize(shape.orientation, target.size());
    QTransform transform = screens::uprightTransform(shape.orientation, stored);
    if (shape.isMirrored)
        transform *= QTransform(-1, 0, 0, 1, target.width(), 0);
    transform *= QTransform::fromTranslate(target.x(), target.y());
    return {isWhole ? QRectF(QPointF(), shape.stored) : aspectFillCrop(shape.stored, stored),
            stored, transform};
}

// Where a point of the frame is in the item. share: of the frame's sides as the sensor sees it,
// from its top left.
[[nodiscard]] inline QPointF mapFromFrame(const FrameShape& shape, const FramePlacement& placement,
                                          const QPointF& share) {
    const QRectF& source = placement.source;
    if (source.isEmpty())
        return {};
    return placement.transform.map(QPointF((share.x() * shape.stored.width() - source.x()) *
                                               placement.stored.width() / source.width(),
                                           (share.y() * shape.stored.height() - source.y()) *
                                               placement.stored.height() / source.height()));
}

}  // namespace kestrelid::scanner
