#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <span>

namespace kestrelid::imagefile {

// The primary picture, turned and mirrored as the file says, so always `up`. Throws std::bad_alloc
// and std::system_error.
[[nodiscard]] ImageResult decodeHeif(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
