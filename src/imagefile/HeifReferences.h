#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <optional>
#include <span>

namespace kestrelid::imagefile {

// A HEIC file's item references (ISO/IEC 14496-12, 8.11.12) say which pictures one is put together
// from. libheif follows them with a new thread for each, also around a circle and through pictures
// that multiply at every step, until neither threads nor memory are left. Returns nothing if the
// references end after no more steps and pictures than real files have.
[[nodiscard]] std::optional<ImageError> checkHeifReferences(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
