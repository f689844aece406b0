#include "zone/ZoneText.h"

#include "zone/CheckDigits.h"
#include "zone/ZoneLayouts.h"

#include <algorithm>

namespace kestrelid::zone {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\v\f";

std::string_view trimmed(std::string_view line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return line.substr(first, line.find_last_not_of(kBlanks) - first + 1);
}

bool isContinuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Bytes of the UTF-8 sequence that the text begins with, as far as it is one.
std::size_t sequenceLength(std::string_view text) noexcept {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t promised = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::size_t length = 1;
    while (length < std::min(promised, text.size()) && isContinuation(text[length]))
        ++length;
    return length;
}

// The lengths of lines that any layout has.
bool mayBeLength(std::size_t length) {
    const auto layouts = zoneLayouts();
    return std::any_of(layouts.begin(), layouts.end(), [&](const ZoneLayout& layout) {
        return std::abs(static_cast<long>(length) - layout.length) <= kLengthTolerance;
    });
}

}  // namespace

std::optional<ZoneLineReading> zoneLine(std::string_view line) {
    constexpr std::size_t kMost = kLongestLine + kLengthTolerance;
    if (line.size() > 4 * kMost)
        return std::nullopt;
    ZoneLineReading reading;
    std::size_t known = 0;
    while (!line.empty()) {
        const std::size_t length = sequenceLength(line);
        const char character = length == 1 ? line.front() : '?';
        known += valueOf(character) >= 0;
        reading.characters.push_back({});
        reading.characters.back().choices[0] = {character, 1.0f};
        line.remove_prefix(length);
    }
    const std::size_t count = reading.characters.size();
    if (!mayBeLength(count) || known * 4 < count * 3)
        return std::nullopt;
    return reading;
}

void forEachLine(std::string_view text,
                 const std::function<void(std::optional<ZoneLineReading>)>& take) {
    if (text.starts_with(kByteOrderMark))
        text.remove_prefix(kByteOrderMark.size());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        if (!line.empty())
            take(zoneLine(line));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

}  // namespace kestrelid::zone
