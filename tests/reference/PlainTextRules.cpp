#include "tests/reference/PlainTextRules.h"

#include <algorithm>
#include <limits>
#include <map>

namespace kestrelid::reference {

namespace {

constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::max();

// What a character is to its neighbours within a cluster: extend and spacing hang on to the one
// before, prefix on to the one behind.
enum class Kind { other, control, extend, spacing, joiner, flag, pictograph, prefix };

struct Sign {
    Kind kind = Kind::other;
    bool isKept = false;               // by normalize(): a letter, mark or number
    bool isAccent = false;             // folded away before
    int order = 0;                     // canonical combining class
    std::u32string_view decomposed{};  // canonically; empty where it is itself
    std::u32string_view upper{};       // empty where it is itself
};

Sign composedOf(std::u32string_view parts) {
    return {.isKept = true, .decomposed = parts};
}
Sign small(std::u32string_view capitals) {
    return {.isKept = true, .upper = capitals};
}

// From the charts of Unicode 15. Of Hangul it has the syllable alone: units() makes it of its
// letters.
const Sign* signOf(char32_t scalar) {
    static const std::map<char32_t, Sign> signs = [] {
        std::map<char32_t, Sign> all{
            {U'\u00A0', {}},
            {U'\u00C9', composedOf(U"E\u0301")},
            {U'\u00DF', small(U"SS")},
            {U'\u00E9', composedOf(U"e\u0301")},
            {U'\u0130', composedOf(U"I\u0307")},
            {U'\u0131', small(U"I")},
            {U'\u0149', small(U"\u02BCN")},
            {U'\u03AC', composedOf(U"\u03B1\u0301")},
            {U'\u03B1', small(U"\u0391")},
            {U'\u0456', small(U"\u0406")},
            {U'\u0457', composedOf(U"\u0456\u0308")},
            {U'\u064B', {.kind = Kind::extend, .isKept = true, .isAccent = true, .order = 27}},
            {U'\u0982', {.kind = Kind::spacing, .isKept = true}},
            {U'\u09BE', {.kind = Kind::extend, .isKept = true}},
            {U'\u09CD', {.kind = Kind::extend, .isKept = true, .order = 9}},
            {U'\u0D4E', {.kind = Kind::prefix, .isKept = true}},
            {U'\u200D', {.kind = Kind::joiner}},
            {U'\uFB01', small(U"FI")},
            {U'\uFFFD', {}}};
        const std::pair<std::u32string_view, Sign> groups[] = {
            {U"\u02BC\u0391\u03A9\u0406\u0416\u0628\u0995\u0996\u099C\u09A2\u09A8\u09AF\u09B7\u09B8"
             U"\uD55C"
             U"\uFF11",
             {.isKept = true}},
            {U"\u0301\u0307\u0308",
             {.kind = Kind::extend, .isKept = true, .isAccent = true, .order = 230}},
            {U"\u0085\u2028\u2029", {.kind = Kind::control}},
            {U"\U0001F467\U0001F468\U0001F469", {.kind = Kind::pictograph}},
            {U"\U0001F1E7\U0001F1E9", {.kind = Kind::flag}}};
        for (const auto& [members, sign] : groups)
            for (const char32_t member : members)
                all[member] = sign;
        for (char32_t ascii = 0; ascii < 0x80; ++ascii)
            all[ascii] = {.kind = ascii < 0x20 || ascii == 0x7F ? Kind::control : Kind::other,
                          .isKept = (ascii >= '0' && ascii <= '9') ||
                                    (ascii >= 'A' && ascii <= 'Z') || ascii == '<' ||
                                    ascii == '>' || ascii == '\''};
        static constexpr std::u32string_view kCapitals = U"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
        for (std::size_t index = 0; index < kCapitals.size(); ++index)
            all[static_cast<char32_t>('a' + index)] = small(kCapitals.substr(index, 1));
        return all;
    }();
    const auto found = signs.find(scalar);
    return found == signs.end() ? nullptr : &found->second;
}

std::u32string replaced(std::u32string text, std::u32string_view part, std::u32string_view by) {
    for (std::size_t at = text.find(part); at != std::u32string::npos; at = text.find(part, at))
        text = text.substr(0, at).append(by).append(text, at + part.size());
    return text;
}

// The scalars of UTF-8, whose lead bytes say how many follow.
std::u32string scalars(std::string_view text) {
    std::u32string result;
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte >= 0xC0)
            result += byte & (byte >= 0xF0 ? 0x07 : byte >= 0xE0 ? 0x0F : 0x1F);
        else if (byte >= 0x80 && !result.empty())
            result.back() = result.back() << 6 | (byte & 0x3F);
        else
            result += byte;
    }
    return result;
}

std::u32string units(std::string_view text) {
    return replaced(scalars(text), U"\u1112\u1161\u11AB", U"\uD55C");
}

std::string utf8(const std::u32string& text) {
    std::string result;
    for (const char32_t scalar : text) {
        const int more = scalar < 0x80 ? 0 : scalar < 0x800 ? 1 : scalar < 0x10000 ? 2 : 3;
        constexpr int kLead[] = {0, 0xC0, 0xE0, 0xF0};
        result += static_cast<char>(kLead[more] | static_cast<int>(scalar >> 6 * more));
        for (int rest = more - 1; rest >= 0; --rest)
            result += static_cast<char>(0x80 | (scalar >> 6 * rest & 0x3F));
    }
    return result;
}

std::u32string mapped(const std::u32string& text, std::u32string_view Sign::*to) {
    std::u32string result;
    for (const char32_t scalar : text) {
        const std::u32string_view other = signOf(scalar)->*to;
        result += other.empty() ? std::u32string_view(&scalar, 1) : other;
    }
    return result;
}

// Canonically decomposed, so that canonically equivalent texts are equal.
std::u32string decomposed(std::string_view text) {
    std::u32string result = mapped(units(text), &Sign::decomposed);
    for (auto from = result.begin(); from != result.end();) {
        const auto to = std::find_if(from, result.end(),
                                     [](char32_t scalar) { return signOf(scalar)->order == 0; });
        std::stable_sort(
            from, to, [](char32_t a, char32_t b) { return signOf(a)->order < signOf(b)->order; });
        from = to == result.end() ? to : to + 1;
    }
    return result;
}

std::u32string upper(std::string_view text) {
    return mapped(decomposed(text), &Sign::upper);
}

std::u32string folded(std::u32string text) {
    std::erase_if(text, [](char32_t scalar) { return signOf(scalar)->isAccent; });
    return text;
}

// Extended grapheme clusters by their grammar: CR LF | control | prefix* core (extend | spacing |
// joiner)*, where a core is two flag letters, a pictograph (extend* joiner pictograph)*, or any one
// else.
std::vector<std::u32string_view> clusters(std::u32string_view text) {
    std::vector<std::u32string_view> result;
    while (!text.empty()) {
        std::size_t at = 0;
        const auto is = [&](Kind kind, std::size_t place) {
            return place < text.size() && signOf(text[place])->kind == kind;
        };
        if (text.starts_with(U"\r\n")) {
            at = 2;
        } else if (is(Kind::control, 0)) {
            at = 1;
        } else {
            while (is(Kind::prefix, at))
                ++at;
            if (is(Kind::flag, at) && is(Kind::flag, at + 1))
                ++at;
            for (bool grows = is(Kind::pictograph, at); grows;) {
                std::size_t next = at + 1;
                while (is(Kind::extend, next))
                    ++next;
                grows = is(Kind::joiner, next) && is(Kind::pictograph, next + 1);
                at = grows ? next + 1 : at;
            }
            if (at < text.size() && !is(Kind::control, at))
                ++at;
            while (is(Kind::extend, at) || is(Kind::spacing, at) || is(Kind::joiner, at))
                ++at;
        }
        result.push_back(text.substr(0, at));
        text.remove_prefix(at);
    }
    return result;
}

std::int64_t distance(std::u32string_view a, std::u32string_view b) {
    const auto rows = clusters(a);
    const auto columns = clusters(b);
    std::vector<std::vector<std::int64_t>> table(rows.size() + 1,
                                                 std::vector<std::int64_t>(columns.size() + 1));
    for (std::size_t row = 0; row <= rows.size(); ++row)
        for (std::size_t column = 0; column <= columns.size(); ++column) {
            std::int64_t& least = table[row][column] = static_cast<std::int64_t>(row + column);
            if (row > 0 && column > 0)
                least =
                    std::min({table[row - 1][column] + 1, table[row][column - 1] + 1,
                              table[row - 1][column - 1] + (rows[row - 1] != columns[column - 1])});
        }
    return table[rows.size()][columns.size()];
}

}  // namespace

bool knows(std::string_view text) {
    const std::u32string all = units(text);
    return utf8(scalars(text)) == text && std::all_of(all.begin(), all.end(), signOf);
}

std::string normalize(std::string_view raw) {
    std::u32string text = replaced(folded(upper(raw)), U"\n", U" ");
    std::erase_if(text, [](char32_t scalar) { return scalar != ' ' && !signOf(scalar)->isKept; });
    text = replaced(std::u32string(1, U' ').append(text).append(U" "), U"  ", U" ");
    return text == U" " ? "" : utf8(text.substr(1, text.size() - 2));
}

std::int64_t editDistance(std::string_view a, std::string_view b) {
    return distance(decomposed(a), decomposed(b));
}

std::int64_t fuzzyDistance(std::string_view keyword, std::string_view text) {
    const std::u32string wanted = folded(upper(keyword));
    if (wanted.empty() || text.empty())
        return kNone;
    const std::size_t limit = clusters(wanted).size() + 8;
    const std::u32string whole = std::u32string(1, U' ').append(upper(text)).append(U" ");
    std::int64_t best = kNone;
    for (std::size_t first = 0; first + 1 < whole.size(); first = whole.find(U' ', first + 1))
        for (std::size_t end = first; (end = whole.find(U' ', end + 1)) != std::u32string::npos;) {
            const std::u32string phrase = whole.substr(first + 1, end - first - 1);
            if (clusters(phrase).size() > limit)
                break;
            best = std::min(best, distance(wanted, phrase));
        }
    return best;
}

std::vector<KeywordMatch> matchKeywords(std::span<const std::string_view> keywords,
                                        std::string_view cleaned) {
    std::vector<KeywordMatch> matches;
    for (const std::string_view keyword : keywords) {
        const std::int64_t found = fuzzyDistance(keyword, cleaned);
        // 18 of 100 characters, and 4 in any case.
        if (found <= 4 ||
            (found != kNone &&
             found * 100 <= static_cast<std::int64_t>(clusters(decomposed(keyword)).size()) * 18))
            matches.push_back({keyword, found});
    }
    return matches;
}

MrzLikeLines mrzLikeLines(std::string_view text) {
    std::vector<std::u32string> lines(1);
    for (const char32_t scalar : decomposed(text)) {
        if (std::u32string_view(U"\n\v\f\r\u0085\u2028\u2029").find(scalar) != std::u32string::npos)
            lines.emplace_back();
        else if (scalar != ' ')
            lines.back() += scalar;
    }
    std::erase(lines, U"");
    if (lines.size() < 2)
        return {false, "Less than 2 lines OCRed."};
    for (std::size_t index = 1; index < lines.size(); ++index) {
        const std::u32string both = mapped(lines[index - 1] + lines[index], &Sign::upper);
        if (both.find_first_not_of(U"ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<") !=
            std::u32string::npos)
            continue;
        const std::size_t first = clusters(lines[index - 1]).size();
        const std::size_t second = clusters(lines[index]).size();
        if (first >= 30 && second >= 30)
            return {true, "Found two MRZ-like lines of lengths " + std::to_string(first) + ", " +
                              std::to_string(second) + "."};
        if (first + second >= 66)
            return {true, "Found combined MRZ-like content."};
    }
    return {false, "No MRZ-like pattern."};
}

}  // namespace kestrelid::reference
