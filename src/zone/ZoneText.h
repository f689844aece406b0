#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <functional>
#include <optional>
#include <string_view>

namespace kestrelid::zone {

// How many characters a line may have too many or too few to be told in part.
inline constexpr int kLengthTolerance = 2;

// The line as a reader would have seen it, if it may be one of a zone's: as long as one, give or
// take a few characters, and mostly of its alphabet.
[[nodiscard]] std::optional<ZoneLineReading> zoneLine(std::string_view line);

// Takes the lines of text that are not empty, one after another: what zoneLine() makes of them.
void forEachLine(std::string_view text,
                 const std::function<void(std::optional<ZoneLineReading>)>& take);

}  // namespace kestrelid::zone
