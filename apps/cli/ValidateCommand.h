#pragma once

#include "apps/cli/ExitStatus.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/PassportDetector.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kestrelid::cli {

struct ValidateOptions {
    std::vector<std::string> inputs;  // files, folders, or "-" for standard input
    bool json = false;
    bool withText = true;  // the recognised text and the zones' contents, in JSON
    int jobs = 0;  // pictures judged at once; 0: as many as there are processors, four at most
    ValidationEffort effort = ValidationEffort::complete;
    std::filesystem::path resources;  // empty: the library's own folders
    std::filesystem::path annotate;   // folder for annotated copies; empty: none
};

// Judges pictures and writes a verdict for each to standard output.
[[nodiscard]] ExitStatus validate(const ValidateOptions& options);

}  // namespace kestrelid::cli
