#pragma once

#include "apps/cli/WatchEvent.h"

#include <string>

namespace kestrelid::cli {

// One line (and of a strict zone its table): local time as ISO 8601 has it, with milliseconds and
// the distance from UTC, then what happened. Empty for errors, which are written elsewhere, and for
// events that a following error explains better.
[[nodiscard]] std::string eventAsText(WallTime time, const WatchEvent& event);

// One JSON object on a line: time, event, and the fields of that event.
[[nodiscard]] std::string eventAsJson(WallTime time, const WatchEvent& event);

}  // namespace kestrelid::cli
