#include "tests/detection/RandomText.h"

#include "detection/PassportKeywords.h"

#include <array>
#include <string_view>

namespace kestrelid::test {

namespace {

std::size_t below(std::mt19937& engine, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine);
}

// Latin, Greek, Cyrillic, Bengali with signs, Arabic, Hangul in jamo, a prepended letter, marks,
// emoji, a ligature.
constexpr std::array<std::string_view, 26> kOddPieces{"é",      "e\u0301",
                                                      "\u0301", "ß",
                                                      "\uFB01", "İ",
                                                      "ı",      "Ω",
                                                      "\u03AC", "Ж",
                                                      "ї",      "\u09BE",
                                                      "\u09CD", "\u0995\u09CD\u09B7",
                                                      "\u0982", "\u064B",
                                                      "ب",      "\u1112\u1161\u11AB",
                                                      "\u0D4E", "👨‍👩‍👧",
                                                      "🇧🇩",     "🇧",
                                                      "\u200D", "\uFFFD",
                                                      "１",     "ŉ"};
constexpr std::array<std::string_view, 12> kGaps{" ",  " ",  " ", " ",      "\n",     "\n",
                                                 "  ", "\t", "-", "\u00A0", "\u2028", "\r\n"};

std::string randomWord(std::mt19937& engine) {
    std::string word;
    switch (below(engine, 8)) {
    case 0:
    case 1:
    case 2: {  // a keyword with misread letters
        word = detection::passportKeywords()[below(engine, detection::passportKeywords().size())];
        for (std::size_t edits = below(engine, 7); edits > 0 && !word.empty(); --edits) {
            const std::size_t place = below(engine, word.size());
            const char letter = static_cast<char>('A' + below(engine, 26));
            if (static_cast<unsigned char>(word[place]) >= 0x80)
                continue;
            if (below(engine, 2) == 0)
                word[place] = letter;
            else
                word.erase(place, 1);
        }
        return word;
    }
    case 3:  // odd pieces, a mark at the start of a word among them
        for (std::size_t pieces = 1 + below(engine, 4); pieces > 0; --pieces)
            word += kOddPieces[below(engine, kOddPieces.size())];
        return word;
    case 4:  // longer than any run that is compared
        return std::string(30 + below(engine, 60), static_cast<char>('A' + below(engine, 26)));
    default:
        for (std::size_t letters = 1 + below(engine, 10); letters > 0; --letters)
            word += static_cast<char>((below(engine, 2) == 0 ? 'a' : 'A') + below(engine, 26));
        return word;
    }
}

}  // namespace

std::string randomText(std::mt19937& engine, std::size_t words) {
    std::string text;
    for (std::size_t count = words == 0 ? 0 : below(engine, words + 1); count > 0; --count) {
        text += randomWord(engine);
        text += kGaps[below(engine, kGaps.size())];
    }
    return text;
}

std::string randomZoneText(std::mt19937& engine) {
    constexpr std::array<std::string_view, 12> kEnds{
        "\n", "\n \n", "\r\n", "\v", "\f", "\r", "\u0085", "\u2028", "\u2029", " ", "\t", "\x0E"};
    std::string text;
    for (std::size_t lines = below(engine, 5); lines > 0; --lines) {
        for (std::size_t length = 26 + below(engine, 16); length > 0; --length)
            text += "AZaz09< "[below(engine, 8)];
        if (below(engine, 8) == 0)
            text += kOddPieces[below(engine, kOddPieces.size())];
        if (below(engine, 16) == 0)
            text += "@[`{/:;="[below(engine, 8)];  // beside the zone's alphabet
        text += kEnds[below(engine, kEnds.size())];
    }
    return text;
}

}  // namespace kestrelid::test
