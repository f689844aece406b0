#pragma once

#include "apps/cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kestrelid::cli {

struct TextOptions {
    std::vector<std::string> files;  // "-" or none at all: standard input
    bool json = false;
};

// Writes what recognised text says for a passport to standard output. Touches nothing of
// recognition.
[[nodiscard]] ExitStatus text(const TextOptions& options);

}  // namespace kestrelid::cli
