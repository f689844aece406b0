#pragma once

#include "apps/cli/DoctorCommand.h"
#include "apps/cli/ExitStatus.h"
#include "apps/cli/TextCommand.h"
#include "apps/cli/ValidateCommand.h"
#include "apps/cli/WatchCommand.h"

#include <variant>

namespace kestrelid::cli {

using Command = std::variant<ValidateOptions, TextOptions, WatchOptions, DoctorOptions>;

// What the arguments ask for; or, where help was asked for or the arguments make no sense, the
// status to exit with, after saying so.
[[nodiscard]] std::variant<Command, ExitStatus> parseCommandLine(int argc, const char* const* argv);

}  // namespace kestrelid::cli
