#pragma once

#include <kestrelid/VisionServices.h>

#include <string>
#include <vector>

namespace kestrelid::test {

enum class Paper { plain, shaded };

// A page with one line of text for each entry, turned clockwise by quarter turns.
[[nodiscard]] Bitmap drawnPage(const std::vector<std::string>& lines, int quarterTurns = 0,
                               PixelFormat format = PixelFormat::bgra8, Paper paper = Paper::plain);

// Light and dark patches without any writing.
[[nodiscard]] Bitmap emptyScene();

[[nodiscard]] Bitmap evenBitmap(int width, int height);

// The first readings, without spaces: recognisers drop or add them.
[[nodiscard]] std::vector<std::string> textsOf(const TextResult& result);

}  // namespace kestrelid::test
