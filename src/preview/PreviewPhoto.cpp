#include "preview/PreviewPhoto.h"

namespace kestrelid::preview {

QRectF PreviewPhoto::pictureRect() const {
    return photo() ? aspectFit(*photo(), boundingRect()) : QRectF();
}

PhotoItem::Rendering PreviewPhoto::rendering(const Photo& photo, qreal pixelRatio) const {
    const QRectF picture = pictureRect();
    if (picture.isEmpty())
        return {};
    return [photo, picture, pixelRatio] { return renderPhoto(photo, picture, pixelRatio); };
}

}  // namespace kestrelid::preview
