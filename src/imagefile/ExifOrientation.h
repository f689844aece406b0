#pragma once

#include <kestrelid/Image.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// The orientation in an EXIF block, with or without its "Exif\0\0" lead. `up` if it is missing, out
// of range or damaged. Throws std::bad_alloc.
[[nodiscard]] Orientation exifOrientation(std::span<const std::byte> exif);

// value: of TIFF tag 0x0112. `up` if out of range.
[[nodiscard]] Orientation orientationFromTag(int value);

}  // namespace kestrelid::imagefile
