#pragma once

#include "detection/EditDistance.h"

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

// Numbers for the characters (extended grapheme clusters) that a set of patterns is written with,
// equal for canonically equivalent ones. All other characters share one number, since they can
// equal nothing in the patterns.
class Alphabet {
public:
    Alphabet();

    // The symbols of text, whose characters join the alphabet.
    std::vector<Symbol> learn(std::string_view text);

    // The symbols of text; size() for characters that were never learnt.
    [[nodiscard]] std::vector<Symbol> read(std::string_view text) const;

    // The symbol of one character, given composed (NFC).
    [[nodiscard]] Symbol symbolOf(std::string_view character) const;

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

private:
    static constexpr Symbol kUnknown = ~Symbol{0};

    std::array<Symbol, 128> ascii_;  // kUnknown for characters that were never learnt
    std::map<std::string, Symbol, std::less<>> others_;
    std::size_t size_ = 0;
};

}  // namespace kestrelid::detection
