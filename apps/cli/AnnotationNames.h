#pragma once

#include "apps/cli/PictureInputs.h"

#include <filesystem>
#include <vector>

namespace kestrelid::cli {

// The path of each input's annotated copy: in folder, under the input's own name (.png for a PNG,
// otherwise .jpg), numbered if an earlier input has that name already or if the copy would replace
// one of the inputs.
[[nodiscard]] std::vector<std::filesystem::path>
annotationPaths(const std::filesystem::path& folder, const std::vector<PictureInput>& inputs);

}  // namespace kestrelid::cli
