#pragma once

#include "imagefile/FileContents.h"

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// Throws std::bad_alloc.
[[nodiscard]] ImageResult decodePng(std::span<const std::byte> file);

// Rows as they stand. Throws std::bad_alloc.
[[nodiscard]] FileBytes encodePng(const Bitmap& bitmap);

}  // namespace kestrelid::imagefile
