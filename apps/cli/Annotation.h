#pragma once

#include "apps/cli/PictureJudge.h"

#include <kestrelid/Image.h>

namespace kestrelid::cli {

// A copy of the judged picture with the outline that was read (thick), the other candidates (thin),
// the verdict, and a box around each field of its zones: green where its check digit passed, red
// where it failed, blue where it has none. It shows nothing that the picture does not show. An
// image without a bitmap stays one.
[[nodiscard]] Image annotated(const JudgedPicture& picture);

}  // namespace kestrelid::cli
