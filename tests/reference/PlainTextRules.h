#pragma once

#include <kestrelid/TextEvidence.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// The text rules written out step by step, slow and plain, for ASCII and some forty characters that
// a table by hand describes. They share neither code nor Unicode data with the library.
namespace kestrelid::reference {

// Whether text is UTF-8 of those characters alone: all that the rules below may be asked about.
[[nodiscard]] bool knows(std::string_view text);

[[nodiscard]] std::string normalize(std::string_view raw);
[[nodiscard]] std::int64_t editDistance(std::string_view a, std::string_view b);
[[nodiscard]] std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text);
[[nodiscard]] std::vector<KeywordMatch> matchKeywords(std::span<const std::string_view> keywords,
                                                      std::string_view cleaned);
[[nodiscard]] MrzLikeLines mrzLikeLines(std::string_view text);

}  // namespace kestrelid::reference
