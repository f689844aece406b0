#include "detection/WordRuns.h"

#include "base/UnicodeText.h"

#include <algorithm>

namespace kestrelid::detection {

namespace {

// The ranges between the places that hold a space.
template <typename Places, typename IsSpace>
std::vector<WordRuns::Word> splitAtSpaces(const Places& places, IsSpace isSpace) {
    std::vector<WordRuns::Word> words;
    std::size_t begin = 0;
    for (std::size_t place = 0; place < places.size(); ++place) {
        if (!isSpace(places[place]))
            continue;
        words.push_back({begin, place});
        begin = place + 1;
    }
    words.push_back({begin, places.size()});
    return words;
}

}  // namespace

WordRuns::WordRuns(std::string_view text, const Alphabet& alphabet)
    : text_(base::composed(base::upperCased(text))) {
    const std::vector<std::string_view> all = base::characters(text_);
    isRegular_ = std::all_of(all.begin(), all.end(), [](std::string_view character) {
        return character.size() == 1 || character.find(' ') == std::string_view::npos;
    });
    if (!isRegular_) {
        words_ = splitAtSpaces(text_, [](char byte) { return byte == ' '; });
        return;
    }
    words_ = splitAtSpaces(all, [](std::string_view character) { return character == " "; });
    symbols_.reserve(all.size());
    for (const std::string_view character : all)
        symbols_.push_back(alphabet.symbolOf(character));
}

}  // namespace kestrelid::detection
