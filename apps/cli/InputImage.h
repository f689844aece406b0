#pragma once

#include "apps/cli/PictureInputs.h"

#include <kestrelid/Image.h>

#include <string>
#include <variant>

namespace kestrelid::cli {

// The picture upright, or one line why there is none, without the picture's name.
[[nodiscard]] std::variant<Image, std::string> inputImage(const PictureInput& input);

}  // namespace kestrelid::cli
