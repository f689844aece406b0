#pragma once

#include "apps/cli/ExitStatus.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/MachineReadableZone.h>

#include <filesystem>
#include <optional>
#include <string>

namespace kestrelid::cli {

struct WatchOptions {
    bool list = false;   // name the cameras instead
    std::string camera;  // a name or a file; empty: the first camera
    bool json = false;
    std::optional<double> seconds;
    std::filesystem::path photo;  // empty: none
    std::optional<double> after;
    bool force = false;
    bool zone = false;  // read machine-readable zones too
    std::optional<CalendarDay> asOf;
    std::filesystem::path resources;  // empty: where the library finds them
};

// Watches a camera until the time is up, a photo is taken, or SIGINT or SIGTERM comes, and writes
// what happens to standard output. Blocks these signals in the threads that it starts.
[[nodiscard]] ExitStatus watch(const WatchOptions& options);

}  // namespace kestrelid::cli
