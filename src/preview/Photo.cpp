#include "preview/Photo.h"

#include "preview/BoxReduction.h"
#include "preview/HostPicture.h"
#include "screens/ContinuousCorner.h"
#include "screens/PixelImage.h"
#include "screens/UprightTransform.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <variant>

namespace kestrelid::preview {

namespace {

constexpr qreal kCornerRadius = 10.0;  // points
constexpr qreal kOutlineWidth = 2.0;   // points
constexpr qreal kMiterLimit = 10.0;

QImage::Format formatOf(PixelFormat format) {
    switch (format) {
    case PixelFormat::bgra8:
        return QImage::Format_RGB32;
    case PixelFormat::rgb8:
        return QImage::Format_RGB888;
    case PixelFormat::bgr8:
        return QImage::Format_BGR888;
    case PixelFormat::rgba8:
        return QImage::Format_RGBX8888;
    case PixelFormat::gray8:
        return QImage::Format_Grayscale8;
    }
    return QImage::Format_Invalid;
}

// The stored rows at about the given size in pixels.
QImage scaledTo(const QImage& stored, const QSize& size) {
    QImage picture = stored.hasAlphaChannel() ? screens::onWhite(stored) : stored;
    const int factor = std::min(picture.width() / size.width(), picture.height() / size.height());
    if (factor > 1)
        picture = boxReduced(picture, factor);
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

}  // namespace

std::optional<Photo> photoOf(const Image& image) {
    const std::optional<Bitmap>& bitmap = image.bitmap();
    if (!bitmap)
        return std::nullopt;
    return Photo{QImage(
                     reinterpret_cast<const uchar*>(bitmap->row(0)), bitmap->width(),
                     bitmap->height(), bitmap->stride(), formatOf(bitmap->format()),
                     [](void* held) { delete static_cast<Bitmap*>(held); }, new Bitmap(*bitmap)),
                 image.orientation()};
}

std::optional<Photo> readPhoto(const QUrl& url) {
    const ImageResult result = readPicture(url);
    const auto* image = std::get_if<Image>(&result);
    return image ? photoOf(*image) : std::nullopt;
}

QRectF aspectFit(const Photo& photo, const QRectF& bounds) {
    const QSizeF shown = screens::uprightSize(photo.orientation, photo.pixels.size());
    if (shown.isEmpty() || bounds.isEmpty())
        return {};
    QRectF fitted(QPointF(), shown.scaled(bounds.size(), Qt::KeepAspectRatio));
    fitted.moveCenter(bounds.center());
    return fitted;
}

RenderedPhoto renderPhoto(const Photo& photo, const QRectF& picture, qreal pixelRatio) {
    const auto scale = QTransform::fromScale(pixelRatio, pixelRatio);
    const qreal reach = kOutlineWidth / 2.0;
    const QRect canvas =
        scale.mapRect(picture.adjusted(-reach, -reach, reach, reach)).toAlignedRect();
    QImage image(canvas.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);

    const QRectF target = scale.mapRect(picture);
    const QSizeF stored = screens::uprightSize(photo.orientation, target.size());
    const QSize pixels(std::max(1, qRound(stored.width())), std::max(1, qRound(stored.height())));
    QBrush brush(scaledTo(photo.pixels, pixels));
    const QSizeF shown = screens::uprightSize(photo.orientation, pixels);
    brush.setTransform(
        screens::uprightTransform(photo.orientation, pixels) *
        QTransform::fromScale(target.width() / shown.width(), target.height() / shown.height()) *
        QTransform::fromTranslate(target.x(), target.y()));

    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.translate(-canvas.topLeft());
    const QPainterPath rounded = screens::continuousRoundedRect(target, kCornerRadius * pixelRatio);
    painter.fillPath(rounded, brush);
    QPen pen(Qt::black, kOutlineWidth * pixelRatio, Qt::SolidLine, Qt::FlatCap, Qt::SvgMiterJoin);
    pen.setMiterLimit(kMiterLimit);
    painter.strokePath(rounded, pen);
    painter.end();
    return {std::move(image), scale.inverted().mapRect(QRectF(canvas))};
}

}  // namespace kestrelid::preview
