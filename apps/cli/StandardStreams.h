#pragma once

#include "apps/cli/ExitStatus.h"

#include <string_view>

namespace kestrelid::cli {

// One thread at a time.

// Writes text to standard output and flushes it, so that a reader at the other end of a pipe gets
// each result when it is ready. A failure (a full disk) is kept for outputStatus().
void writeOutput(std::string_view text);

[[nodiscard]] bool outputFailed();

// done, or inputFailed after saying on standard error why standard output could not be written.
[[nodiscard]] ExitStatus outputStatus();

// What error lines begin with: "kestrelid" unless another program says so at its start.
void setProgramName(std::string_view literal);

// "PROGRAM: NAME: CAUSE", one line on standard error. name and cause are escaped for the
// terminal.
void writeError(std::string_view name, std::string_view cause);
void writeError(std::string_view cause);

}  // namespace kestrelid::cli
