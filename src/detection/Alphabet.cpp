#include "detection/Alphabet.h"

#include "base/UnicodeText.h"

namespace kestrelid::detection {

Alphabet::Alphabet() {
    ascii_.fill(kUnknown);
}

Symbol Alphabet::symbolOf(std::string_view character) const {
    Symbol symbol = kUnknown;
    if (character.size() == 1 && base::isAscii(character)) {
        symbol = ascii_[static_cast<unsigned char>(character.front())];
    } else if (const auto found = others_.find(character); found != others_.end()) {
        symbol = found->second;
    }
    return symbol == kUnknown ? static_cast<Symbol>(size_) : symbol;
}

std::vector<Symbol> Alphabet::learn(std::string_view text) {
    std::vector<Symbol> symbols;
    const std::string form = base::composed(text);
    for (const std::string_view character : base::characters(form)) {
        const Symbol symbol = symbolOf(character);
        if (symbol == size_) {
            if (character.size() == 1 && base::isAscii(character))
                ascii_[static_cast<unsigned char>(character.front())] = symbol;
            else
                others_.emplace(character, symbol);
            ++size_;
        }
        symbols.push_back(symbol);
    }
    return symbols;
}

std::vector<Symbol> Alphabet::read(std::string_view text) const {
    const std::string form = base::composed(text);
    std::vector<Symbol> symbols;
    for (const std::string_view character : base::characters(form))
        symbols.push_back(symbolOf(character));
    return symbols;
}

}  // namespace kestrelid::detection
