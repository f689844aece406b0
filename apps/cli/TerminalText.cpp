#include "apps/cli/TerminalText.h"

#include "apps/cli/Utf8.h"

#include <cstdio>

namespace kestrelid::cli {
namespace {

std::string formatted(const char* format, unsigned value) {
    char buffer[16];
    const int length = std::snprintf(buffer, sizeof buffer, format, value);
    return {buffer, static_cast<std::size_t>(length)};
}

std::string escaped(char32_t codePoint) {
    switch (codePoint) {
    case U'\n':
        return "\\n";
    case U'\r':
        return "\\r";
    case U'\t':
        return "\\t";
    default:
        return formatted(codePoint < 0x80 ? "\\x%02x" : "\\u{%x}",
                         static_cast<unsigned>(codePoint));
    }
}

}  // namespace

bool isTerminalControl(char32_t c) noexcept {
    const bool c0 = c < 0x20 || c == 0x7F;
    const bool c1 = c >= 0x80 && c < 0xA0;  // U+009B starts a sequence like ESC [
    const bool separator = c == 0x2028 || c == 0x2029;
    // Embeddings, overrides, isolates and marks reorder what follows them on the line.
    const bool direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
                           c == 0x200E || c == 0x200F || c == 0x061C;
    return c0 || c1 || separator || direction;
}

std::string terminalText(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const Utf8Character character = firstCharacter(text);
        if (!character.wellFormed)
            result += formatted("\\x%02x", static_cast<unsigned char>(text.front()));
        else if (isTerminalControl(character.codePoint))
            result += escaped(character.codePoint);
        else
            result += text.substr(0, character.length);
        text.remove_prefix(character.length);
    }
    return result;
}

}  // namespace kestrelid::cli
