#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace kestrelid::test {

// Text as recognisers and hostile callers write it: pieces of keywords with misread letters, words
// of many scripts, combining marks, emoji, spaces, line breaks. words: about how many. Repeatable
// for an engine's state.
[[nodiscard]] std::string randomText(std::mt19937& engine, std::size_t words);

// A line break, a space or nothing in between lines that look like a machine-readable zone, more or
// less.
[[nodiscard]] std::string randomZoneText(std::mt19937& engine);

}  // namespace kestrelid::test
