#include "tests/reference/PlainZoneRules.h"

#include <algorithm>
#include <cstdlib>

namespace {

using namespace kestrelid;

bool isWhole(const MachineReadableZone& zone) {
    return std::none_of(zone.problems.begin(), zone.problems.end(),
                        [](const auto& p) { return p.kind <= ZoneProblem::Kind::wrongLength; });
}

// A reader that is sure of the text by two bits of each byte, and takes another for what it is
// near.
ZoneReading readingOf(std::string_view text) {
    ZoneReading reading;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' || reading.lines.empty())
            reading.lines.emplace_back();
        if (text[i] == '\n')
            continue;
        const char neighbour = text[text.size() - 1 - i];
        const float doubt = static_cast<float>((i * 7 + static_cast<unsigned char>(neighbour)) % 4);
        reading.lines.back().characters.push_back({{{{text[i], 0.95f - 0.2f * doubt},
                                                     {neighbour, 0.03f + 0.15f * doubt},
                                                     {'<', 0.04f}}}});
    }
    return reading;
}

// Each character of the zone is one that the reader thought of.
bool isOfReading(const MachineReadableZone& zone, const ZoneReading& reading) {
    std::size_t given = 0;
    for (const ZoneLine& line : zone.lines) {
        const std::string_view text = line.text.view();
        if (text.empty())
            continue;  // missing
        const auto& characters = reading.lines[given++].characters;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const auto& choices = characters[i].choices;
            if (text[i] != '?' &&
                std::none_of(choices.begin(), choices.end(),
                             [&](const auto& choice) { return choice.character == text[i]; }))
                return false;
        }
    }
    return true;
}

}  // namespace

// On any bytes the zones agree with the plain rules, also after corrections, which take nothing but
// what the reader thought of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const MachineReadableZone& zone : parseZones(text)) {
        if (isWhole(zone) && !reference::disagreement(zone).empty())
            std::abort();
    }
    if (size > 100)
        return 0;
    const ZoneReading reading = readingOf(text);
    const auto zone = parseZone(reading, {.clearProbability = 0.0f});
    if (zone && (!isOfReading(*zone, reading) ||
                 (isWhole(*zone) && !reference::disagreement(*zone).empty())))
        std::abort();
    return 0;
}
