#include "apps/cli/TerminalText.h"

#include <kestrelid/TextEvidence.h>

#include <cstdio>
#include <utility>

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

bool isTerminalControl(char32_t c) noexcept {
    const bool c0 = c < 0x20 || c == 0x7F;
    const bool c1 = c >= 0x80 && c < 0xA0;  // U+009B starts a sequence like ESC [
    const bool separator = c == 0x2028 || c == 0x2029;
    // Embeddings, overrides, isolates and marks reorder what follows them on the line.
    const bool direction = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
                           c == 0x200E || c == 0x200F || c == 0x061C;
    return c0 || c1 || separator || direction;
}

// The first character of well-formed UTF-8, and its bytes.
std::pair<char32_t, std::size_t> firstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t codePoint = length == 1 ? lead : lead & (0x7F >> length);
    for (const char next : text.substr(1, length - 1))
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(next) & 0x3F);
    return {codePoint, length};
}

}  // namespace

std::string withoutControls(std::string_view text, std::string (*escaped)(char32_t codePoint)) {
    std::string result;
    result.reserve(text.size() + 1);
    while (!text.empty()) {
        const auto [codePoint, length] = firstCharacter(text);
        if (isTerminalControl(codePoint))
            result += escaped(codePoint);
        else
            result += text.substr(0, length);
        text.remove_prefix(length);
    }
    return result;
}

std::string terminalText(std::string_view text) {
    std::string result;
    while (const auto invalid = invalidUtf8Offset(text)) {
        result += withoutControls(text.substr(0, *invalid), escaped);
        result += formatted("\\x%02x", static_cast<unsigned char>(text[*invalid]));
        text.remove_prefix(*invalid + 1);
    }
    return result + withoutControls(text, escaped);
}

}  // namespace kestrelid::cli
