#pragma once

#include "zone/ZoneCorrection.h"

#include <span>

namespace kestrelid::zone {

// What the grid says, and what speaks against it. lines: those that the grid was made of.
[[nodiscard]] MachineReadableZone zoneFrom(const ZoneGrid& grid, const Checks& checks,
                                           std::span<const ZoneLineReading* const> lines,
                                           const ZoneRules& rules);

}  // namespace kestrelid::zone
