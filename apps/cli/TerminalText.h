#pragma once

#include <string>
#include <string_view>

namespace kestrelid::cli {

// Text that is safe to show in a terminal and stays on one line: control characters and characters
// that turn the direction of writing become \n, \t, \x1b or \u{202e}, ill-formed UTF-8 becomes
// \xff, a backslash stays.
[[nodiscard]] std::string terminalText(std::string_view text);

// Whether a terminal could act on the code point instead of showing it.
[[nodiscard]] bool isTerminalControl(char32_t codePoint) noexcept;

}  // namespace kestrelid::cli
