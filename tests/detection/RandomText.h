#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace kestrelid::test {

// Text as recognisers and hostile callers write it: pieces of keywords with misread letters, words
// of many scripts, combining marks, emoji, spaces, line breaks. words: about how many. Repeatable
// for an engine's state.
[[nodiscard]] std::string randomText(std::mt19937& engine, std::size_t words);

// Up to four lines, more or less those of a machine-readable zone, mostly of about thirty letters.
[[nodiscard]] std::string randomZoneText(std::mt19937& engine);

}  // namespace kestrelid::test
