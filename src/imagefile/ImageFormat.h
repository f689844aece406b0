#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace kestrelid::imagefile {

enum class ImageFormat { jpeg, png, webp, tiff, heif, unknown };

// By the first bytes; the file's name does not count.
[[nodiscard]] ImageFormat imageFormatOf(std::span<const std::byte> file) noexcept;

// Why a file of an unknown format is not read: names the format if it is a common one.
[[nodiscard]] std::string unknownFormatCause(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
