#pragma once

#include <kestrelid/Image.h>
#include <kestrelid/ImageFile.h>

#include <QImage>
#include <QUrl>
#include <QVariant>
#include <variant>

namespace kestrelid::preview {

// A picture as a host names it; std::monostate: it named none.
using HostPicture = std::variant<std::monostate, Image, QImage, QUrl>;

// From an Image, a QImage, or the URL of a local file or a resource of the program, also as a
// string; also as a value of JavaScript.
[[nodiscard]] HostPicture hostPicture(const QVariant& value);

// Reads a local file or a resource of the program, as readImage() does. Thread: any; takes the time
// of decoding.
[[nodiscard]] ImageResult readPicture(const QUrl& url);

// The picture itself, read or converted where that is needed; it has a bitmap. Thread: any; takes
// the time of decoding.
[[nodiscard]] ImageResult imageFrom(const HostPicture& source);

}  // namespace kestrelid::preview
