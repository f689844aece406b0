#include "base/UnicodeText.h"

#include <algorithm>
#include <initializer_list>
#include <unicode/uchar.h>

namespace kestrelid::base {

namespace {

bool isOneOf(int32_t value, std::initializer_list<int32_t> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

bool isControl(int32_t kind) {
    return isOneOf(kind, {U_GCB_CONTROL, U_GCB_CR, U_GCB_LF});
}

// Decides between neighbouring scalars whether a cluster ends, by the rules GB3 to GB13 of UAX #29,
// revision 41 (Unicode 15.0). The later rule GB9c, which joins consonants around a virama, is left
// out on purpose: it would shorten the Bengali keywords so much that any word of four letters
// matched three entries of the table.
class ClusterRules {
public:
    // Whether a cluster ends before scalar, which follows all scalars asked about before.
    bool endsBefore(char32_t scalar) {
        const auto codePoint = static_cast<UChar32>(scalar);
        const int32_t kind = u_getIntPropertyValue(codePoint, UCHAR_GRAPHEME_CLUSTER_BREAK);
        const bool isPictograph = u_hasBinaryProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC) != 0;
        const bool ends = !joins(kind, isPictograph);

        flagLetters_ = kind == U_GCB_REGIONAL_INDICATOR ? flagLetters_ + 1 : 0;
        if (isPictograph)
            isInPictograph_ = true;
        else if (kind != U_GCB_EXTEND && kind != U_GCB_ZWJ)
            isInPictograph_ = false;
        previous_ = kind;
        return ends;
    }

private:
    [[nodiscard]] bool joins(int32_t kind, bool isPictograph) const {
        if (previous_ == U_GCB_CR && kind == U_GCB_LF)
            return true;
        if (isControl(previous_) || isControl(kind))
            return false;
        if (isOneOf(kind, {U_GCB_EXTEND, U_GCB_ZWJ, U_GCB_SPACING_MARK}) ||
            previous_ == U_GCB_PREPEND)
            return true;
        if (previous_ == U_GCB_ZWJ && isInPictograph_ && isPictograph)
            return true;
        if (previous_ == U_GCB_REGIONAL_INDICATOR && kind == U_GCB_REGIONAL_INDICATOR)
            return flagLetters_ % 2 == 1;
        return joinsHangul(kind);
    }

    [[nodiscard]] bool joinsHangul(int32_t kind) const {
        switch (previous_) {
        case U_GCB_L:
            return isOneOf(kind, {U_GCB_L, U_GCB_V, U_GCB_LV, U_GCB_LVT});
        case U_GCB_LV:
        case U_GCB_V:
            return isOneOf(kind, {U_GCB_V, U_GCB_T});
        case U_GCB_LVT:
        case U_GCB_T:
            return kind == U_GCB_T;
        default:
            return false;
        }
    }

    int32_t previous_ = U_GCB_CONTROL;
    int flagLetters_ = 0;          // regional indicators in a row
    bool isInPictograph_ = false;  // only marks and joiners since the last pictograph
};

}  // namespace

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    result.reserve(text.size());
    // CR LF is the only cluster of more than one ASCII character.
    if (isAscii(text) && text.find('\r') == std::string_view::npos) {
        for (std::size_t offset = 0; offset < text.size(); ++offset)
            result.push_back(text.substr(offset, 1));
        return result;
    }
    ClusterRules rules;
    std::size_t begin = 0;
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t start = offset;
        const bool ends = rules.endsBefore(nextScalar(text, offset));
        if (ends && start > 0) {
            result.push_back(text.substr(begin, start - begin));
            begin = start;
        }
    }
    if (begin < text.size())
        result.push_back(text.substr(begin));
    return result;
}

}  // namespace kestrelid::base
