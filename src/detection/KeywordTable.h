#pragma once

#include "detection/Alphabet.h"
#include "detection/EditDistance.h"

#include <kestrelid/TextEvidence.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

namespace kestrelid::detection {

class WordRuns;

// The distance where a keyword can be compared with nothing.
inline constexpr std::int64_t kNoDistance = std::numeric_limits<std::int64_t>::max();

// The smallest edit distance between keyword and any run of consecutive words of text that is at
// most 8 characters longer; kNoDistance where there is no such run or one of both is empty.
[[nodiscard]] std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text);

// Keywords made ready for comparison with many texts. Immutable. Thread: any.
class KeywordTable {
public:
    // The characters of keywords must outlive the table.
    explicit KeywordTable(std::span<const std::string_view> keywords);

    // The table of passportKeywords(), made once.
    [[nodiscard]] static const KeywordTable& passport();

    // fuzzyDistance() of every entry, in table order.
    [[nodiscard]] std::vector<std::int64_t> distances(std::string_view cleaned) const;

    // Those entries that are close enough, in table order; repeated entries again.
    [[nodiscard]] std::vector<KeywordMatch> matches(std::string_view cleaned) const;

    // Whether an entry at this distance is close enough: up to kSingleKeywordFuzzyThreshold edits,
    // or 18% of its characters where that is more.
    [[nodiscard]] bool isMatch(std::size_t entry, std::int64_t distance) const;

private:
    struct Prepared {
        EditPattern pattern;
        std::int64_t allowedDistance;
        std::int64_t longestRun;  // characters
    };

    [[nodiscard]] std::int64_t distanceInRegularText(const Prepared& keyword,
                                                     const WordRuns& text) const;
    void lowerByIrregularText(const WordRuns& text, std::vector<std::int64_t>& distances) const;

    std::vector<std::string_view> keywords_;
    std::vector<std::size_t>
        preparedOf_;  // for each entry its place in prepared_, the same for repeated entries
    std::vector<Prepared> prepared_;
    Alphabet alphabet_;
};

// The matches of keywords in cleaned text, in their order.
[[nodiscard]] std::vector<KeywordMatch> matchKeywords(std::span<const std::string_view> keywords,
                                                      std::string_view cleaned);

}  // namespace kestrelid::detection
