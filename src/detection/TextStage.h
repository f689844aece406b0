#pragma once

#include "detection/Findings.h"

#include <string>

namespace kestrelid::detection {

// The lines of bitmap, joined with line feeds; empty where there is none. onlyUntilDecided: the
// rest may be left out once the keywords are decided. Failures go to the console and count as no
// text.
[[nodiscard]] std::string readText(TextService& service, const Console& console,
                                   const Bitmap& bitmap, bool onlyUntilDecided);

}  // namespace kestrelid::detection
