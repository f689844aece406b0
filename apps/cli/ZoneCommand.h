#pragma once

#include "apps/cli/ExitStatus.h"

#include <kestrelid/MachineReadableZone.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::cli {

struct ZoneOptions {
    std::vector<std::string> files;  // pictures and folders of them, or text; "-": standard input
    bool isText = false;             // the files hold text; none at all: standard input
    std::filesystem::path resources;
    bool json = false;
    std::optional<CalendarDay> asOf;
};

// Writes the machine-readable zones in pictures or in text to standard output.
[[nodiscard]] ExitStatus zone(const ZoneOptions& options);

// A day as YYYY-MM-DD; none if there is no such day.
[[nodiscard]] std::optional<CalendarDay> calendarDay(std::string_view text);

}  // namespace kestrelid::cli
