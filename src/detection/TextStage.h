#pragma once

#include "detection/Findings.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

// The lines of bitmap. isEnough: true says of a line that the rest may be left out; empty: all are
// wanted. Failures go to the console and count as no text.
[[nodiscard]] std::vector<TextObservation>
readLines(TextService& service, const Console& console, const Bitmap& bitmap,
          std::function<bool(std::string_view)> isEnough);

// For readLines(): once the keywords are decided, the rest of the text cannot change the score.
[[nodiscard]] std::function<bool(std::string_view)> untilDecided();

// Their best readings, joined with line feeds.
[[nodiscard]] std::string joinedText(const std::vector<TextObservation>& lines);

}  // namespace kestrelid::detection
