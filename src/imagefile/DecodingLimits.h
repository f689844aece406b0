#pragma once

#include <kestrelid/ImageFile.h>

#include <cstdint>
#include <optional>
#include <string>

namespace kestrelid::imagefile {

// Bytes that one decoding may hold at once, file apart: twice the largest RGB picture.
inline constexpr std::int64_t kMaximumDecoderMemory = 2 * 3 * kMaximumPixels;

// Returns nothing if the picture is within kMaximumSide and kMaximumPixels. Takes what a header
// claims, so any value.
[[nodiscard]] std::optional<ImageError> checkSize(std::int64_t width, std::int64_t height);

// Returns nothing if bytes are within kMaximumDecoderMemory: pixels and what the codec library
// holds beside them.
[[nodiscard]] std::optional<ImageError> checkMemory(std::int64_t bytes);

// Memory was refused. Takes none.
[[nodiscard]] ImageError outOfMemory() noexcept;

// "truncated JPEG: text", for instance, as one printable line whatever the library wrote. A text
// that says that memory was refused becomes outOfMemory().
enum class Fault { truncated, damaged, unsupported };
[[nodiscard]] ImageError decodingError(Fault fault, const char* format, const std::string& text);

enum class Alpha { straight, premultiplied };

// Turns width RGBA pixels into RGB in place, as they look on white.
void layOnWhite(unsigned char* row, int width, Alpha alpha);

}  // namespace kestrelid::imagefile
