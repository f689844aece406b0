#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <nlohmann/json_fwd.hpp>

#include <span>
#include <string>
#include <string_view>

namespace kestrelid::cli {

// For each zone a line with its format and the strict answer, then indented a table of its fields,
// and a line for each problem. One line where there is no zone.
[[nodiscard]] std::string zonesAsText(std::string_view name,
                                      std::span<const MachineReadableZone> zones);

// A line for each field, indented; empty if none was read.
[[nodiscard]] std::string zoneTable(const MachineReadableZone& zone);

// "Zone TD3, strict", or what speaks first against it. Nothing that the zone says.
[[nodiscard]] std::string zoneSummary(const MachineReadableZone& zone);

// An array of objects: format, lines, strict, fields, problems; without text, only format and
// strict.
[[nodiscard]] nlohmann::ordered_json zonesAsJson(std::span<const MachineReadableZone> zones,
                                                 bool withText = true);

}  // namespace kestrelid::cli
