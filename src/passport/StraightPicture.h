#pragma once

#include "preview/Photo.h"

#include <QPolygonF>
#include <QRectF>
#include <QSizeF>

namespace kestrelid::passport {

// A photo as if its page lay flat below the camera.
class StraightPicture {
public:
    // outline: the page's corners in shares of the shown photo, from its top left: top left, top
    // right, bottom right, bottom left. Anything but four corners of a page: the whole photo.
    StraightPicture(preview::Photo photo, const QPolygonF& outline);

    // Pixels of the photo, as long as the page's sides are on average.
    [[nodiscard]] QSizeF size() const { return size_; }

    // A part of it (shares, from the top left), in so many pixels. Thread: any; for 12 megapixels
    // some 50 ms.
    [[nodiscard]] QImage part(const QRectF& shares, const QSize& pixels) const;

private:
    preview::Photo photo_;
    QPolygonF page_;  // pixels of the shown photo
    QSizeF size_;
};

}  // namespace kestrelid::passport
