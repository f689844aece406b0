#pragma once

#include "preview/PhotoItem.h"

#include <QtQml/qqmlregistration.h>

namespace kestrelid::preview {

// Shows a photo whole, in the middle, with rounded corners and an outline.
class PreviewPhoto : public PhotoItem {
    Q_OBJECT
    // The rectangle of the picture, without its outline. Empty before its size is known.
    Q_PROPERTY(QRectF pictureRect READ pictureRect NOTIFY pictureChanged)
    QML_ELEMENT

public:
    using PhotoItem::PhotoItem;

    [[nodiscard]] QRectF pictureRect() const;

protected:
    [[nodiscard]] Rendering rendering(const Photo& photo, qreal pixelRatio) const override;
};

}  // namespace kestrelid::preview
