#include "detection/KeywordTable.h"

#include "base/UnicodeText.h"
#include "detection/PassportKeywords.h"
#include "detection/VerdictNumbers.h"
#include "detection/WordRuns.h"

#include <algorithm>
#include <map>
#include <string>

namespace kestrelid::detection {

namespace {

constexpr double kAllowedPerCharacter = 0.18;
constexpr std::int64_t kRunBeyondKeyword = 8;  // characters

std::int64_t between(const EditPattern& pattern, std::span<const Symbol> text) {
    EditColumn column(pattern);
    for (const Symbol symbol : text)
        column.append(symbol);
    return column.distance();
}

}  // namespace

KeywordTable::KeywordTable(std::span<const std::string_view> keywords)
    : keywords_(keywords.begin(), keywords.end()) {
    std::map<std::string_view, std::size_t> seen;
    std::vector<std::vector<Symbol>> learnt;
    for (const std::string_view keyword : keywords) {
        const auto [place, isNew] = seen.emplace(keyword, learnt.size());
        if (isNew)
            learnt.push_back(alphabet_.learn(base::withoutDiacritics(base::upperCased(keyword))));
        preparedOf_.push_back(place->second);
    }
    // The tolerance goes by the entry as it stands, the length of runs by the entry as it is
    // compared.
    prepared_.reserve(learnt.size());
    for (const std::vector<Symbol>& symbols : learnt)
        prepared_.push_back({EditPattern(symbols, alphabet_.size()), 0,
                             static_cast<std::int64_t>(symbols.size()) + kRunBeyondKeyword});
    for (const auto& [keyword, place] : seen)
        prepared_[place].allowedDistance = std::max(
            kSingleKeywordFuzzyThreshold,
            static_cast<std::int64_t>(static_cast<double>(base::characters(keyword).size()) *
                                      kAllowedPerCharacter));
}

const KeywordTable& KeywordTable::passport() {
    // Never destroyed: a host's worker may still be judging when the process ends.
    static const auto* const table = new KeywordTable(passportKeywords());
    return *table;
}

bool KeywordTable::isMatch(std::size_t entry, std::int64_t distance) const {
    return distance <= prepared_[preparedOf_[entry]].allowedDistance;
}

std::int64_t KeywordTable::distanceInRegularText(const Prepared& keyword,
                                                 const WordRuns& text) const {
    std::int64_t best = kNoDistance;
    const std::span<const Symbol> symbols = text.symbols();
    for (auto first = text.words().begin(); first != text.words().end(); ++first) {
        EditColumn column(keyword.pattern);
        std::size_t compared = first->begin;
        for (auto last = first; last != text.words().end(); ++last) {
            if (static_cast<std::int64_t>(last->end - first->begin) > keyword.longestRun)
                break;
            for (; compared < last->end; ++compared)
                column.append(symbols[compared]);
            best = std::min(best, column.distance());
        }
    }
    return best;
}

void KeywordTable::lowerByIrregularText(const WordRuns& text,
                                        std::vector<std::int64_t>& distances) const {
    const auto longest = std::max_element(
        prepared_.begin(), prepared_.end(),
        [](const Prepared& a, const Prepared& b) { return a.longestRun < b.longestRun; });
    const std::string_view whole = text.text();
    for (auto first = text.words().begin(); first != text.words().end(); ++first) {
        for (auto last = first; last != text.words().end(); ++last) {
            const std::vector<Symbol> run =
                alphabet_.read(whole.substr(first->begin, last->end - first->begin));
            const auto length = static_cast<std::int64_t>(run.size());
            if (length > longest->longestRun)
                break;
            for (std::size_t index = 0; index < prepared_.size(); ++index)
                if (length <= prepared_[index].longestRun)
                    distances[index] =
                        std::min(distances[index], between(prepared_[index].pattern, run));
        }
    }
}

std::vector<std::int64_t> KeywordTable::distances(std::string_view cleaned) const {
    std::vector<std::int64_t> byKeyword(prepared_.size(), kNoDistance);
    if (!cleaned.empty()) {
        const WordRuns text(cleaned, alphabet_);
        if (text.isRegular())
            std::transform(
                prepared_.begin(), prepared_.end(), byKeyword.begin(),
                [&](const Prepared& keyword) { return distanceInRegularText(keyword, text); });
        else
            lowerByIrregularText(text, byKeyword);
    }
    std::vector<std::int64_t> byEntry(keywords_.size());
    for (std::size_t entry = 0; entry < byEntry.size(); ++entry) {
        const std::size_t place = preparedOf_[entry];
        byEntry[entry] = prepared_[place].pattern.length() == 0 ? kNoDistance : byKeyword[place];
    }
    return byEntry;
}

std::vector<KeywordMatch> KeywordTable::matches(std::string_view cleaned) const {
    std::vector<KeywordMatch> found;
    const std::vector<std::int64_t> all = distances(cleaned);
    for (std::size_t entry = 0; entry < all.size(); ++entry)
        if (isMatch(entry, all[entry]))
            found.push_back({keywords_[entry], all[entry]});
    return found;
}

std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text) {
    return KeywordTable({&keyword, 1}).distances(text).front();
}

std::vector<KeywordMatch> matchKeywords(std::span<const std::string_view> keywords,
                                        std::string_view cleaned) {
    return KeywordTable(keywords).matches(cleaned);
}

}  // namespace kestrelid::detection
