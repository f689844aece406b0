#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// page: from 0, reduced copies of other pages not counted. Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeTiff(std::span<const std::byte> file, int page);

// One at least; the last one may be damaged. Throws std::bad_alloc.
[[nodiscard]] int countTiffPages(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
