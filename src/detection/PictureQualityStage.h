#pragma once

#include <kestrelid/Examination.h>

namespace kestrelid::detection {

// Of the bitmap inside the outline; outline: null for the whole. pixelsPerCharacter stays empty.
[[nodiscard]] PictureQuality pictureQuality(const Bitmap& bitmap,
                                            const RectangleObservation* outline);

}  // namespace kestrelid::detection
