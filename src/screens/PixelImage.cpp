#include "screens/PixelImage.h"

#include <cstddef>
#include <memory>
#include <QPainter>

namespace kestrelid::screens {

QImage onWhite(const QImage& picture) {
    QImage opaque(picture.size(), QImage::Format_RGB32);
    if (opaque.isNull())
        return {};
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

Image imageOf(const QImage& picture) {
    const QImage opaque = picture.hasAlphaChannel() ? onWhite(picture) : picture;
    const auto held = std::make_shared<const QImage>(opaque.convertToFormat(QImage::Format_RGB888));
    if (held->isNull())
        return {};
    const auto bitmap =
        Bitmap::wrap(held->width(), held->height(), held->bytesPerLine(), PixelFormat::rgb8,
                     std::shared_ptr<const std::byte[]>(
                         held, reinterpret_cast<const std::byte*>(held->constBits())),
                     static_cast<std::size_t>(held->sizeInBytes()));
    return bitmap ? Image(*bitmap) : Image();
}

}  // namespace kestrelid::screens
