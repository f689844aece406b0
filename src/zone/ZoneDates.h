#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <optional>
#include <string_view>

namespace kestrelid::zone {

// characters: six, the year, the month and the day, two each; where a part is not known two
// fillers. None: no such day. What rules.century throws counts as no century.
[[nodiscard]] std::optional<ZoneDate> dateFrom(ZoneFieldKind kind, std::string_view characters,
                                               const ZoneRules& rules);

}  // namespace kestrelid::zone
