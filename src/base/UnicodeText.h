#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Unicode text services. Text is well-formed UTF-8 in and out. Thread: any.
namespace kestrelid::base {

// Any bytes as well-formed UTF-8: ill-formed ones become U+FFFD, so that they cannot join other
// bytes to a character that nobody wrote.
[[nodiscard]] std::string wellFormed(std::string_view bytes);

// Upper case by the default, locale-independent rules with full mappings: ß becomes SS.
[[nodiscard]] std::string upperCased(std::string_view text);

// Without accents and similar marks, composed again (NFC): É becomes E. Marks that belong to one
// script stay, since they are its spelling: a Bengali word without its virama is another word.
[[nodiscard]] std::string withoutDiacritics(std::string_view text);

// Canonical composition (NFC): two texts are canonically equivalent when theirs is equal.
[[nodiscard]] std::string composed(std::string_view text);

// Extended grapheme clusters (UAX #29, Unicode 15.0), as views into text: what a reader calls
// characters.
[[nodiscard]] std::vector<std::string_view> characters(std::string_view text);

// Letters, marks and numbers of every script.
[[nodiscard]] bool isAlphanumeric(char32_t scalar);

// What nextScalar() gives for ill-formed bytes.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// The scalar that begins at offset, which moves behind it; U+FFFD for ill-formed bytes. offset <
// text.size().
[[nodiscard]] char32_t nextScalar(std::string_view text, std::size_t& offset);

// Bytes before the first ill-formed sequence.
[[nodiscard]] std::size_t wellFormedLength(std::string_view bytes);

// Every byte below 0x80: a text for which the rules above need no tables.
[[nodiscard]] bool isAscii(std::string_view text);

}  // namespace kestrelid::base
