#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <optional>
#include <span>

namespace kestrelid::zone {

struct Candidate {
    MachineReadableZone zone;
    std::size_t lineCount = 0;  // lines that it takes
};

// The zone that begins with the first of the lines. isAll: that takes all of them.
[[nodiscard]] std::optional<Candidate> zoneAt(std::span<const ZoneLineReading> lines, bool isAll,
                                              const ZoneRules& rules);

// The most lines that a zone takes.
inline constexpr std::size_t kMostLines = 3;

}  // namespace kestrelid::zone
