#pragma once

#include <kestrelid/Image.h>

#include <cstddef>
#include <span>
#include <vector>

namespace kestrelid::imagefile {

// The same file with an EXIF block that holds orientation alone, in place of any it had. The file
// itself if it is not a JPEG. Throws std::bad_alloc.
[[nodiscard]] std::vector<std::byte> withOrientation(std::span<const std::byte> jpeg,
                                                     Orientation orientation);

}  // namespace kestrelid::imagefile
