#include "detection/MrzLikeLines.h"

#include "base/UnicodeText.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kestrelid::detection {

namespace {

constexpr std::size_t kMinimumLineLength = 30;
constexpr std::size_t kMinimumPairLength = 66;

struct Line {
    std::string text;
    std::size_t length = 0;  // characters as read, before upper-casing
};

// The line breaks of Unicode: U+000A to U+000D, next line, line separator and paragraph separator.
bool isLineBreak(char32_t scalar) {
    return (scalar >= 0x0A && scalar <= 0x0D) || scalar == 0x85 || scalar == 0x2028 ||
           scalar == 0x2029;
}

// The lines of text without their spaces, those that are then empty left out.
std::vector<Line> linesOf(std::string_view text) {
    std::vector<Line> lines;
    std::string line;
    const auto finish = [&] {
        if (!line.empty())
            lines.push_back({line, base::characters(line).size()});
        line.clear();
    };
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t start = offset;
        const char32_t scalar = base::nextScalar(text, offset);
        if (isLineBreak(scalar))
            finish();
        else if (scalar != ' ')
            line.append(text, start, offset - start);
    }
    finish();
    return lines;
}

// All of text in the alphabet of the machine-readable zone (ICAO Doc 9303-3, 4.3).
bool isZoneText(std::string_view text) {
    const std::string upper = base::upperCased(text);
    return std::all_of(upper.begin(), upper.end(), [](char byte) {
        return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '<';
    });
}

bool isZoneLine(const Line& line) {
    return line.length >= kMinimumLineLength && isZoneText(line.text);
}

}  // namespace

MrzLikeLines detectMRZLikeLines(std::string_view text) {
    const std::vector<Line> lines = linesOf(base::wellFormed(text));
    if (lines.size() < 2)
        return {false, "Less than 2 lines OCRed."};
    for (std::size_t index = 0; index + 1 < lines.size(); ++index) {
        const Line& first = lines[index];
        const Line& second = lines[index + 1];
        if (isZoneLine(first) && isZoneLine(second))
            return {true, "Found two MRZ-like lines of lengths " + std::to_string(first.length) +
                              ", " + std::to_string(second.length) + "."};
        if (first.length + second.length >= kMinimumPairLength &&
            isZoneText(first.text + second.text))
            return {true, "Found combined MRZ-like content."};
    }
    return {false, "No MRZ-like pattern."};
}

}  // namespace kestrelid::detection
