#include "tests/reference/PlainTextRules.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <unicode/normlzr.h>
#include <unicode/rbbi.h>
#include <unicode/translit.h>
#include <unicode/uniset.h>
#include <unicode/unistr.h>

namespace kestrelid::reference {

namespace {

using icu::UnicodeString;

constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();

UnicodeString toIcu(std::string_view text) {
    return UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
}

std::string toUtf8(const UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

UnicodeString upper(const UnicodeString& text) {
    return UnicodeString(text).toUpper(icu::Locale::getRoot());
}

UnicodeString folded(UnicodeString text) {
    UErrorCode status = U_ZERO_ERROR;
    static const std::unique_ptr<icu::Transliterator> fold(icu::Transliterator::createInstance(
        "NFD; [[:Mn:]&[:Script=Inherited:]] Remove; NFC", UTRANS_FORWARD, status));
    fold->transliterate(text);
    return text;
}

icu::UnicodeSet setOf(const char* pattern) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeSet set(UnicodeString::fromUTF8(pattern), status);
    set.freeze();
    return set;
}

// Extended grapheme clusters as a grammar. ICU's own has one rule more, which joins Indic
// consonants around a virama.
const icu::RuleBasedBreakIterator& clusterGrammar() {
    static const UnicodeString rules = UnicodeString::fromUTF8(R"(
        !!chain;
        !!lookAheadHardBreak;
        $Control = [\p{Grapheme_Cluster_Break=Control}\u000D\u000A];
        $Mark = [\p{Grapheme_Cluster_Break=Extend}\p{Grapheme_Cluster_Break=SpacingMark}\u200D];
        $Extend = [\p{Grapheme_Cluster_Break=Extend}];
        $Prepend = [\p{Grapheme_Cluster_Break=Prepend}];
        $Flag = [\p{Grapheme_Cluster_Break=Regional_Indicator}];
        $Pict = [:ExtPict:];
        $L = [\p{Grapheme_Cluster_Break=L}];
        $V = [\p{Grapheme_Cluster_Break=V}];
        $T = [\p{Grapheme_Cluster_Break=T}];
        $LV = [\p{Grapheme_Cluster_Break=LV}];
        $LVT = [\p{Grapheme_Cluster_Break=LVT}];
        \u000D \u000A;
        $L ($L | $V | $LV | $LVT);
        ($LV | $V) ($V | $T);
        ($LVT | $T) $T;
        [^$Control] $Mark;
        $Prepend [^$Control];
        $Pict $Extend* \u200D $Pict;
        ^$Prepend* $Flag $Flag / $Flag;
        ^$Prepend* $Flag $Flag;
        .;)");
    UErrorCode status = U_ZERO_ERROR;
    UParseError where;
    static const icu::RuleBasedBreakIterator grammar(rules, where, status);
    if (U_FAILURE(status))
        throw std::logic_error(u_errorName(status) + std::string(" in line ") +
                               std::to_string(where.line));
    return grammar;
}

// The characters of text, each fully decomposed, so that canonically equivalent ones are equal.
std::vector<UnicodeString> clusters(const UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(clusterGrammar().clone());
    breaks->setText(text);
    std::vector<UnicodeString> result;
    for (int32_t start = breaks->first(), end = breaks->next(); end != icu::BreakIterator::DONE;
         start = end, end = breaks->next()) {
        result.emplace_back();
        icu::Normalizer::decompose(text.tempSubStringBetween(start, end), false, 0, result.back(),
                                   status);
    }
    return result;
}

std::int64_t distance(const UnicodeString& a, const UnicodeString& b) {
    const std::vector<UnicodeString> rows = clusters(a);
    const std::vector<UnicodeString> columns = clusters(b);
    std::vector<std::vector<std::int64_t>> table(rows.size() + 1,
                                                 std::vector<std::int64_t>(columns.size() + 1));
    for (std::size_t row = 0; row <= rows.size(); ++row)
        for (std::size_t column = 0; column <= columns.size(); ++column) {
            if (row == 0 || column == 0) {
                table[row][column] = static_cast<std::int64_t>(row + column);
                continue;
            }
            const bool isEqual = rows[row - 1] == columns[column - 1];
            table[row][column] = std::min({table[row - 1][column - 1] + (isEqual ? 0 : 1),
                                           table[row - 1][column] + 1, table[row][column - 1] + 1});
        }
    return table[rows.size()][columns.size()];
}

std::vector<UnicodeString> split(const UnicodeString& text, const icu::UnicodeSet& separators) {
    std::vector<UnicodeString> parts(1);
    for (int32_t index = 0; index < text.length(); index = text.moveIndex32(index, 1)) {
        const UChar32 scalar = text.char32At(index);
        if (separators.contains(scalar))
            parts.emplace_back();
        else
            parts.back().append(scalar);
    }
    return parts;
}

}  // namespace

std::string normalize(std::string_view raw) {
    const UnicodeString text = folded(upper(toIcu(raw)));
    static const icu::UnicodeSet wanted = setOf("[[:L:][:M:][:N:]\\ <>'\\u000A]");
    UnicodeString kept;
    for (int32_t index = 0; index < text.length(); index = text.moveIndex32(index, 1)) {
        const UChar32 scalar = text.char32At(index);
        if (wanted.contains(scalar))
            kept.append(scalar);
    }
    kept.findAndReplace("\n", " ");
    while (kept.indexOf("  ") >= 0)
        kept.findAndReplace("  ", " ");
    return toUtf8(kept.trim());
}

std::int64_t editDistance(std::string_view a, std::string_view b) {
    return distance(toIcu(a), toIcu(b));
}

std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text) {
    const UnicodeString wanted = folded(upper(toIcu(keyword)));
    const UnicodeString searched = upper(toIcu(text));
    if (wanted.isEmpty() || searched.isEmpty())
        return kNone;
    static const icu::UnicodeSet space = setOf("[\\ ]");
    const std::size_t limit = clusters(wanted).size() + 8;
    const std::vector<UnicodeString> words = split(searched, space);
    std::int64_t best = kNone;
    for (std::size_t first = 0; first < words.size(); ++first) {
        UnicodeString phrase = words[first];
        std::size_t last = first;
        while (clusters(phrase).size() <= limit) {
            best = std::min(best, distance(wanted, phrase));
            if (++last == words.size())
                break;
            phrase = phrase + " " + words[last];
        }
    }
    return best;
}

std::vector<std::pair<std::string, std::int64_t>>
matchKeywords(const std::vector<std::string>& keywords, std::string_view cleaned) {
    std::vector<std::pair<std::string, std::int64_t>> matches;
    for (const std::string& keyword : keywords) {
        const std::int64_t found = fuzzyDistance(keyword, cleaned);
        const auto allowed =
            static_cast<std::int64_t>(static_cast<double>(clusters(toIcu(keyword)).size()) * 0.18);
        if (allowed <= 1 ? found <= 4 : found < 5 || found <= allowed)
            matches.emplace_back(keyword, found);
    }
    return matches;
}

std::pair<bool, std::string> mrzLikeLines(std::string_view text) {
    static const icu::UnicodeSet breaks = setOf("[\\u000A-\\u000D\\u0085\\u2028\\u2029]");
    std::vector<UnicodeString> lines;
    for (UnicodeString line : split(toIcu(text), breaks)) {
        line.findAndReplace(" ", "");
        if (!line.isEmpty())
            lines.push_back(line);
    }
    if (lines.size() < 2)
        return {false, "Less than 2 lines OCRed."};
    const auto isClean = [](const UnicodeString& line) {
        const UnicodeString capitals = upper(line);
        for (int32_t index = 0; index < capitals.length(); ++index)
            if (UnicodeString("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<").indexOf(capitals[index]) < 0)
                return false;
        return true;
    };
    for (std::size_t index = 1; index < lines.size(); ++index) {
        const UnicodeString& a = lines[index - 1];
        const UnicodeString& b = lines[index];
        const std::size_t lengthOfA = clusters(a).size();
        const std::size_t lengthOfB = clusters(b).size();
        if (lengthOfA >= 30 && isClean(a) && lengthOfB >= 30 && isClean(b))
            return {true, "Found two MRZ-like lines of lengths " + std::to_string(lengthOfA) +
                              ", " + std::to_string(lengthOfB) + "."};
        if (lengthOfA + lengthOfB >= 66 && isClean(a + b))
            return {true, "Found combined MRZ-like content."};
    }
    return {false, "No MRZ-like pattern."};
}

}  // namespace kestrelid::reference
