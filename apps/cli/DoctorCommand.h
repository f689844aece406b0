#pragma once

#include "apps/cli/ExitStatus.h"

#include <filesystem>

namespace kestrelid::cli {

struct DoctorOptions {
    bool json = false;
    std::filesystem::path resources;  // empty: the library's own folders
};

// Says what recognition and capture find on this machine and what would bring the missing parts.
// Returns done if text can be read, with or without a camera; otherwise inputFailed.
[[nodiscard]] ExitStatus doctor(const DoctorOptions& options);

}  // namespace kestrelid::cli
