#pragma once

#include <cstddef>
#include <string_view>

namespace kestrelid::cli {

struct Utf8Character {
    std::size_t length = 1;  // bytes
    char32_t codePoint = 0;
    bool wellFormed = false;  // otherwise length is 1 and codePoint is meaningless
};

// The character that text begins with; text is not empty.
[[nodiscard]] Utf8Character firstCharacter(std::string_view text) noexcept;

}  // namespace kestrelid::cli
