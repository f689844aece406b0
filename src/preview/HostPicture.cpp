#include "preview/HostPicture.h"

#include <cstddef>
#include <memory>
#include <QByteArray>
#include <QFile>
#include <QJSValue>
#include <QPainter>
#include <QQmlFile>
#include <span>

namespace kestrelid::preview {

namespace {

QVariant plain(const QVariant& value) {
    return value.metaType() == QMetaType::fromType<QJSValue>() ? value.value<QJSValue>().toVariant()
                                                               : value;
}

}  // namespace

HostPicture hostPicture(const QVariant& value) {
    const QVariant given = plain(value);
    const QMetaType type = given.metaType();
    if (type == QMetaType::fromType<Image>())
        return given.value<Image>();
    if (type == QMetaType::fromType<QImage>())
        return given.value<QImage>();
    if (type == QMetaType::fromType<QUrl>())
        return given.toUrl();
    if (type == QMetaType::fromType<QString>() && !given.toString().isEmpty())
        return QUrl(given.toString());
    return std::monostate();
}

ImageResult readPicture(const QUrl& url) {
    const QString path = QQmlFile::urlToLocalFileOrQrc(url);
    if (path.isEmpty())
        return ImageError{.cause = "it is not a file on this machine"};
    if (!path.startsWith(QLatin1Char(':')))
        return readImage(QFile::encodeName(path).toStdString());
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return ImageError{.cause = file.errorString().toStdString()};
    const QByteArray bytes = file.readAll();
    return decodeImage(std::as_bytes(std::span(bytes.data(), bytes.size())));
}

QImage onWhite(const QImage& picture) {
    QImage opaque(picture.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, picture);
    return opaque;
}

Image imageOf(const QImage& picture) {
    if (picture.isNull())
        return {};
    const QImage opaque = picture.hasAlphaChannel() ? onWhite(picture) : picture;
    const auto held = std::make_shared<const QImage>(opaque.convertToFormat(QImage::Format_RGB888));
    const auto bitmap =
        Bitmap::wrap(held->width(), held->height(), held->bytesPerLine(), PixelFormat::rgb8,
                     std::shared_ptr<const std::byte[]>(
                         held, reinterpret_cast<const std::byte*>(held->constBits())),
                     static_cast<std::size_t>(held->sizeInBytes()));
    return bitmap ? Image(*bitmap) : Image();
}

ImageResult imageFrom(const HostPicture& source) {
    if (const auto* url = std::get_if<QUrl>(&source))
        return readPicture(*url);
    Image image;
    if (const auto* given = std::get_if<Image>(&source))
        image = *given;
    else if (const auto* picture = std::get_if<QImage>(&source))
        image = imageOf(*picture);
    if (!image.bitmap())
        return ImageError{.cause = "there is no picture"};
    return image;
}

}  // namespace kestrelid::preview
