#pragma once

#include "apps/cli/DoctorCommand.h"
#include "apps/cli/ExitStatus.h"
#include "apps/cli/TextCommand.h"
#include "apps/cli/ValidateCommand.h"
#include "apps/cli/WatchCommand.h"
#include "apps/cli/ZoneCommand.h"

#include <variant>

namespace kestrelid::cli {

using Command =
    std::variant<ValidateOptions, TextOptions, ZoneOptions, WatchOptions, DoctorOptions>;

// What the arguments ask for. If they ask for help or make no sense, says so and returns the status
// to exit with.
[[nodiscard]] std::variant<Command, ExitStatus> parseCommandLine(int argc, const char* const* argv);

}  // namespace kestrelid::cli
