#pragma once

#include "apps/cli/PictureJudge.h"

#include <kestrelid/Image.h>

namespace kestrelid::cli {

// A copy of the judged picture with the outline that was read (thick), the other candidates (thin)
// and the verdict drawn on it. An image without a bitmap stays one.
[[nodiscard]] Image annotated(const JudgedPicture& picture);

}  // namespace kestrelid::cli
