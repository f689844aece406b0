#pragma once

#include "detection/Alphabet.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

// A text in upper case, split at every single space, ready for comparing runs of its words.
class WordRuns {
public:
    // Half-open range: of symbols() where the text is regular, of bytes of text() otherwise.
    struct Word {
        std::size_t begin;
        std::size_t end;
    };

    WordRuns(std::string_view text, const Alphabet& alphabet);

    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    [[nodiscard]] const std::vector<Word>& words() const noexcept { return words_; }

    // Regular: every space is a character of its own, so that a run of words has the same
    // characters by itself as within the text. A space melts into one with a combining mark that
    // begins the next word, for instance.
    [[nodiscard]] bool isRegular() const noexcept { return isRegular_; }

    // The characters of a regular text.
    [[nodiscard]] const std::vector<Symbol>& symbols() const noexcept { return symbols_; }

private:
    std::string text_;
    std::vector<Word> words_;
    std::vector<Symbol> symbols_;
    bool isRegular_;
};

}  // namespace kestrelid::detection
