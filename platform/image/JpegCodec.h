#pragma once

#include "platform/image/FileContents.h"

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid {

// Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeJpeg(std::span<const std::byte> file, const DecodeOptions& options);

// Quality 90, rows as they stand. Throws std::bad_alloc.
[[nodiscard]] FileBytes encodeJpeg(const Bitmap& bitmap);

}  // namespace kestrelid
