#include "detection/EditDistance.h"

#include "detection/Alphabet.h"

#include <algorithm>

namespace kestrelid::detection {

EditPattern::EditPattern(std::span<const Symbol> symbols, std::size_t alphabetSize)
    : length_(static_cast<std::int64_t>(symbols.size())),
      blocks_(std::max<std::size_t>(1, (symbols.size() + kWordBits - 1) / kWordBits)),
      positions_((alphabetSize + 1) * blocks_) {
    for (std::size_t row = 0; row < symbols.size(); ++row)
        positions_[symbols[row] * blocks_ + row / kWordBits] |= std::uint64_t{1}
                                                                << (row % kWordBits);
}

EditColumn::EditColumn(const EditPattern& pattern)
    : pattern_(pattern), rest_(pattern.blocks_ - 1),
      lastRow_(std::uint64_t{1} << ((pattern.length_ + EditPattern::kWordBits - 1) %
                                    EditPattern::kWordBits)),
      distance_(pattern.length_) {}

void EditColumn::append(Symbol symbol) {
    if (pattern_.length_ == 0) {
        ++distance_;
        return;
    }
    // What enters a block from the row above it: row 0 of the table grows by one with every symbol.
    std::uint64_t risesIn = 1;
    std::uint64_t fallsIn = 0;
    for (std::size_t index = 0; index < pattern_.blocks_; ++index) {
        Block& block = index == 0 ? first_ : rest_[index - 1];
        const std::uint64_t equal = pattern_.positions_[symbol * pattern_.blocks_ + index];
        const std::uint64_t vertical = equal | block.falls;
        const std::uint64_t carried = equal | fallsIn;
        const std::uint64_t diagonal =
            (((carried & block.rises) + block.rises) ^ block.rises) | carried;
        std::uint64_t rises = block.falls | ~(diagonal | block.rises);
        std::uint64_t falls = block.rises & diagonal;

        const bool last = index + 1 == pattern_.blocks_;
        const std::uint64_t edge = last ? lastRow_ : std::uint64_t{1} << 63;
        const std::uint64_t risesOut = (rises & edge) != 0;
        const std::uint64_t fallsOut = (falls & edge) != 0;

        rises = (rises << 1) | risesIn;
        falls = (falls << 1) | fallsIn;
        block.rises = falls | ~(vertical | rises);
        block.falls = rises & vertical;
        risesIn = risesOut;
        fallsIn = fallsOut;
    }
    distance_ += static_cast<std::int64_t>(risesIn) - static_cast<std::int64_t>(fallsIn);
}

std::int64_t editDistance(std::string_view a, std::string_view b) {
    Alphabet alphabet;
    const std::vector<Symbol> pattern = alphabet.learn(a);
    const EditPattern prepared(pattern, alphabet.size());
    EditColumn column(prepared);
    for (const Symbol symbol : alphabet.read(b))
        column.append(symbol);
    return column.distance();
}

}  // namespace kestrelid::detection
