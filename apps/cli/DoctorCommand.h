#pragma once

#include "apps/cli/ExitStatus.h"

#include <filesystem>

namespace kestrelid::cli {

struct DoctorOptions {
    bool json = false;
    std::filesystem::path resources;  // empty: where the library finds them
};

// Says what recognition and capture find on this machine and what would bring the missing parts.
// done where the default recogniser reads a picture, with or without a camera; inputFailed
// otherwise.
[[nodiscard]] ExitStatus doctor(const DoctorOptions& options);

}  // namespace kestrelid::cli
