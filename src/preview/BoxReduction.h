#pragma once

#include <QImage>

namespace kestrelid::preview {

// The means of blocks of factor by factor pixels; a rest at the right and lower edges is left out.
// image: opaque, no side shorter than factor. The result is RGB32. Much faster than
// QImage::scaled() for large pictures, and without a copy of them.
[[nodiscard]] QImage boxReduced(const QImage& image, int factor);

}  // namespace kestrelid::preview
