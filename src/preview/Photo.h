#pragma once

#include <kestrelid/Image.h>

#include <optional>
#include <QImage>
#include <QRectF>
#include <QUrl>
#include <QVariant>

namespace kestrelid::preview {

// A picture as it is stored, and how it is shown.
struct Photo {
    QImage pixels;
    Orientation orientation = Orientation::up;
};

// Shares the image's pixels. Returns nothing if it has no bitmap.
[[nodiscard]] std::optional<Photo> photoOf(const Image& image);

// Reads a local file or a resource of the program, as readImage() does. Returns nothing if it
// cannot be read. Thread: any; takes the time of decoding.
[[nodiscard]] std::optional<Photo> readPhoto(const QUrl& url);

// The largest rectangle of the photo's shown aspect ratio in the middle of bounds.
[[nodiscard]] QRectF aspectFit(const Photo& photo, const QRectF& bounds);

// A photo ready to be shown at rect, which reaches beyond the picture by the outline.
struct RenderedPhoto {
    QImage image;
    QRectF rect;  // points, or what the item that made it says
};

// Scales the photo to picture (points), upright, rounds its corners and outlines them. pixelRatio:
// device pixels a point. Thread: any; for 12 megapixels some 50 ms.
[[nodiscard]] RenderedPhoto renderPhoto(const Photo& photo, const QRectF& picture,
                                        qreal pixelRatio);

}  // namespace kestrelid::preview
