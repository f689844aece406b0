#pragma once

#include <kestrelid/TextEvidence.h>

#include <string_view>

namespace kestrelid::detection {

// Whether two neighbouring lines of text look like a machine-readable zone: capitals, digits and <
// only, each at least 30 characters long or 66 together. Spaces and empty lines do not count; lower
// case counts as capitals.
[[nodiscard]] MrzLikeLines detectMRZLikeLines(std::string_view text);

}  // namespace kestrelid::detection
