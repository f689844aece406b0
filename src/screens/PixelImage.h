#pragma once

#include <kestrelid/Image.h>

#include <QImage>

namespace kestrelid::screens {

// The same picture, transparent parts laid on white; null if the picture is, or without memory.
[[nodiscard]] QImage onWhite(const QImage& picture);

// An image without a bitmap if the picture is null, or without memory. Thread: any.
[[nodiscard]] Image imageOf(const QImage& picture);

}  // namespace kestrelid::screens
