#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <optional>
#include <span>

namespace kestrelid::imagefile {

// The sequence parameters in a HEIC file's decoder configurations (ISO/IEC 14496-15, 8.3.3.1) have
// a picture size of their own, which nothing ties to the file's. libde265 takes memory by them, and
// writes to standard error about some that contradict each other. Returns nothing if none of them
// contradicts itself, and their size could be read.
[[nodiscard]] std::optional<ImageError> checkHevcHeaders(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
