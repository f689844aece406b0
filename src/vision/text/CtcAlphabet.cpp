#include "vision/text/CtcAlphabet.h"

#include <algorithm>

namespace kestrelid::vision {
namespace {

constexpr std::size_t kBlank = 0;

// The character of ASCII that entry is or, as a full-width form or typographic mark, stands for.
std::optional<char> englishCharacter(std::string_view entry) {
    if (entry.size() == 1 && entry.front() > ' ' && entry.front() <= '~')
        return entry.front();
    if (entry.size() != 3)
        return std::nullopt;
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(entry[index]); };
    const unsigned codePoint = (byte(0) & 0x0Fu) << 12 | (byte(1) & 0x3Fu) << 6 | (byte(2) & 0x3Fu);
    if (codePoint >= 0xFF01 && codePoint <= 0xFF5E)
        return static_cast<char>(codePoint - 0xFF01 + '!');
    switch (codePoint) {
    case 0x2013:
    case 0x2014:
        return '-';
    case 0x2018:
    case 0x2019:
        return '\'';
    case 0x201C:
    case 0x201D:
        return '"';
    default:
        return std::nullopt;
    }
}

}  // namespace

std::optional<CtcAlphabet> CtcAlphabet::parse(std::string_view dictionary) {
    CtcAlphabet alphabet;
    std::size_t index = kBlank;
    while (!dictionary.empty()) {
        const auto end = dictionary.find('\n');
        std::string_view entry = dictionary.substr(0, end);
        dictionary.remove_prefix(end == std::string_view::npos ? dictionary.size() : end + 1);
        if (entry.ends_with('\r'))
            entry.remove_suffix(1);
        ++index;
        if (const auto character = englishCharacter(entry))
            alphabet.symbols_.push_back({index, *character});
    }
    alphabet.symbols_.push_back({++index, ' '});
    alphabet.classCount_ = index + 1;

    for (const std::string_view range : {"09", "AZ", "az"})
        for (char character = range.front(); character <= range.back(); ++character)
            if (std::none_of(alphabet.symbols_.begin(), alphabet.symbols_.end(),
                             [=](const Symbol& symbol) { return symbol.character == character; }))
                return std::nullopt;
    return alphabet;
}

CtcReading CtcAlphabet::decode(std::span<const float> probabilities) const {
    CtcReading reading;
    char previous = '\0';
    for (; probabilities.size() >= classCount_;
         probabilities = probabilities.subspan(classCount_)) {
        Symbol best{kBlank, '\0'};
        for (const Symbol& symbol : symbols_)
            if (probabilities[symbol.index] > probabilities[best.index])
                best = symbol;
        if (best.index != kBlank && best.character != previous) {
            reading.text += best.character;
            reading.confidence += probabilities[best.index];
        }
        previous = best.character;
    }
    if (!reading.text.empty())
        reading.confidence /= static_cast<float>(reading.text.size());
    const auto isSpace = [](char character) { return character == ' '; };
    const auto first = std::find_if_not(reading.text.begin(), reading.text.end(), isSpace);
    reading.text.erase(reading.text.begin(), first);
    const auto last = std::find_if_not(reading.text.rbegin(), reading.text.rend(), isSpace);
    reading.text.erase(last.base(), reading.text.end());
    return reading;
}

}  // namespace kestrelid::vision
