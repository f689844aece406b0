#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The text rules written out step by step, slow and plain, on ICU strings. They share no code with
// the library.
namespace kestrelid::reference {

[[nodiscard]] std::string normalize(std::string_view raw);
[[nodiscard]] std::int64_t editDistance(std::string_view a, std::string_view b);
[[nodiscard]] std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text);

// Keyword and distance of every match, in the order of keywords.
[[nodiscard]] std::vector<std::pair<std::string, std::int64_t>>
matchKeywords(const std::vector<std::string>& keywords, std::string_view cleaned);

[[nodiscard]] std::pair<bool, std::string> mrzLikeLines(std::string_view text);

}  // namespace kestrelid::reference
