#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// The first page. Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeTiff(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
