#pragma once

#include <kestrelid/Bitmap.h>

#include <cstdint>
#include <span>

namespace kestrelid::capture {

inline constexpr int kSwayFramesPerSecond = 30;

// Writes frame number of a picture that sways to the right by up to two pixels and back, a
// fifteenth of a pixel a frame; columns at the edges repeat. frame: rows of picture.width() pixels
// without gaps. picture: BGRA8.
void drawSwayingFrame(const Bitmap& picture, std::uint64_t number, std::span<std::uint32_t> frame);

}  // namespace kestrelid::capture
