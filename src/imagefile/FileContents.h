#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <tl/expected.hpp>
#include <vector>

namespace kestrelid::imagefile {

using FileBytes = tl::expected<std::vector<std::byte>, ImageError>;

// Regular files only, of kMaximumFileSize bytes at most: a pipe
// or a device could block, or never end. Throws std::bad_alloc.
[[nodiscard]] FileBytes readRegularFile(const std::filesystem::path& path);

// Writes beside path and renames, so that path never holds half a file. Returns nothing if it was
// written. Throws std::bad_alloc.
[[nodiscard]] std::optional<ImageError> replaceFile(const std::filesystem::path& path,
                                                    std::span<const std::byte> contents);

}  // namespace kestrelid::imagefile
