#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::vision {

struct CtcReading {
    std::string text;
    float confidence = 0.0f;  // mean over the characters, 0..1
};

// What the classes of a recognition network stand for, reduced to the characters of English text:
// the printable ones of ASCII, full-width forms and typographic marks counting as those. A network
// trained on thousands of characters otherwise answers with look-alikes from other scripts.
class CtcAlphabet {
public:
    // dictionary: one character a line. Class 0 is the blank, class N the character of line N, the
    // class after the last line the space. Returns nothing if an English letter or digit is
    // missing.
    [[nodiscard]] static std::optional<CtcAlphabet> parse(std::string_view dictionary);

    [[nodiscard]] std::size_t classCount() const noexcept { return classCount_; }

    // Best path: probabilities holds one row of classCount() values for each step along the line.
    [[nodiscard]] CtcReading decode(std::span<const float> probabilities) const;

private:
    struct Symbol {
        std::size_t index;
        char character;
    };

    std::vector<Symbol> symbols_;  // ascending by index
    std::size_t classCount_ = 0;
};

}  // namespace kestrelid::vision
