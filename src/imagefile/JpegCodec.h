#pragma once

#include "imagefile/FileContents.h"

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeJpeg(std::span<const std::byte> file, const DecodeOptions& options);

// Rows as they stand. quality: percent. Throws std::bad_alloc.
[[nodiscard]] FileBytes encodeJpeg(const Bitmap& bitmap, int quality = 90);

}  // namespace kestrelid::imagefile
