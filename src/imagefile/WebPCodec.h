#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// The first picture of an animation. Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeWebP(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
