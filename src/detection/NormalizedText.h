#pragma once

#include <string>
#include <string_view>

namespace kestrelid::detection {

// Recognised text as keywords are looked up in it: upper case, accents folded, only letters, marks,
// numbers, <, > and ' kept, words parted by single spaces. Other characters vanish without a gap:
// SUR-NAME becomes SURNAME.
[[nodiscard]] std::string normalize(std::string_view raw);

}  // namespace kestrelid::detection
