#pragma once

#include "tests/support/TemporaryFolder.h"

#include <kestrelid/Bitmap.h>

#include <filesystem>

namespace kestrelid::test {

// A drawing with detail everywhere; its top left quarter is red.
[[nodiscard]] Bitmap drawing(int width, int height);

// Whether a pixel of that part of the bitmap, 0..1 from the top left, is about red.
[[nodiscard]] bool isRed(const Bitmap& bitmap, double x, double y);

// A motion JPEG film of that many frames of 320x240, 30 a second.
void writeFilm(const std::filesystem::path& path, int frames);

}  // namespace kestrelid::test
