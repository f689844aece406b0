#pragma once

#include <string>
#include <string_view>

namespace kestrelid::cli {

// Text that is safe to show in a terminal and stays on one line: control characters and characters
// that turn the direction of writing become \n, \t, \x1b or \u{202e}, ill-formed UTF-8 becomes
// \xff, a backslash stays.
[[nodiscard]] std::string terminalText(std::string_view text);

// Replaces each character that a terminal could act on instead of showing it. text: well-formed
// UTF-8.
[[nodiscard]] std::string withoutControls(std::string_view text,
                                          std::string (*escaped)(char32_t codePoint));

}  // namespace kestrelid::cli
