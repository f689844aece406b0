#pragma once

#include "apps/cli/PictureInputs.h"

#include <filesystem>
#include <vector>

namespace kestrelid::cli {

// Where the annotated copy of each input goes: in folder, under the input's own name (.png for a
// PNG, otherwise .jpg), numbered where an earlier input took the name already or where it would
// replace one of the inputs.
[[nodiscard]] std::vector<std::filesystem::path>
annotationPaths(const std::filesystem::path& folder, const std::vector<PictureInput>& inputs);

}  // namespace kestrelid::cli
