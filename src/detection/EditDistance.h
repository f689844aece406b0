#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

// Levenshtein distance between two texts, in characters (extended grapheme clusters) that are
// compared by canonical equivalence.
[[nodiscard]] std::int64_t editDistance(std::string_view a, std::string_view b);

// A character as a small number: its place in an alphabet, or the alphabet's size for any other
// character.
using Symbol = std::uint32_t;

// A word or phrase that many texts are compared with.
class EditPattern {
public:
    // symbols: all below alphabetSize.
    EditPattern(std::span<const Symbol> symbols, std::size_t alphabetSize);

    [[nodiscard]] std::int64_t length() const noexcept { return length_; }

private:
    friend class EditColumn;

    static constexpr std::size_t kWordBits = 64;

    std::int64_t length_;
    std::size_t blocks_;  // 64-bit words that hold one bit for each symbol of the pattern
    std::vector<std::uint64_t>
        positions_;  // [symbol][block]: where the symbol stands in the pattern
};

// The distance between a pattern and a growing text, one symbol after another: the bit-parallel
// algorithm of Myers (1999) in the form that Hyyrö (2003) gives for whole texts, with patterns of
// any length cut into blocks of 64.
class EditColumn {
public:
    explicit EditColumn(const EditPattern& pattern);

    void append(Symbol symbol);

    // Between the pattern and all symbols appended so far.
    [[nodiscard]] std::int64_t distance() const noexcept { return distance_; }

private:
    struct Block {
        std::uint64_t rises = ~std::uint64_t{0};  // where the column grows by one from row to row
        std::uint64_t falls = 0;                  // where it shrinks by one
    };

    const EditPattern& pattern_;
    Block first_;
    std::vector<Block>
        rest_;               // empty for patterns of up to 64 symbols, so that nothing is allocated
    std::uint64_t lastRow_;  // the pattern's last symbol in its block
    std::int64_t distance_;
};

}  // namespace kestrelid::detection
