#include "preview/HostPicture.h"

#include "screens/PixelImage.h"

#include <QByteArray>
#include <QFile>
#include <QJSValue>
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

ImageResult imageFrom(const HostPicture& source) {
    if (const auto* url = std::get_if<QUrl>(&source))
        return readPicture(*url);
    Image image;
    if (const auto* given = std::get_if<Image>(&source))
        image = *given;
    else if (const auto* picture = std::get_if<QImage>(&source))
        image = screens::imageOf(*picture);
    if (!image.bitmap())
        return ImageError{.cause = "there is no picture"};
    return image;
}

}  // namespace kestrelid::preview
