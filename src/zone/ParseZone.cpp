#include "zone/ZoneCandidate.h"
#include "zone/ZoneText.h"

#include <new>

namespace kestrelid {
namespace {

// Zones among lines that come one after another.
class ZoneSearch {
public:
    explicit ZoneSearch(const ZoneRules& rules) : rules_(rules) {}

    void take(std::optional<ZoneLineReading> line) {
        if (!line) {
            flush();
            return;
        }
        lines_.push_back(std::move(*line));
        if (lines_.size() == zone::kMostLines)
            step();
    }

    std::vector<MachineReadableZone> finish() {
        flush();
        return std::move(zones_);
    }

private:
    void flush() {
        while (!lines_.empty())
            step();
    }

    void step() {
        auto candidate = zone::zoneAt(lines_, false, rules_);
        const std::size_t used = candidate ? candidate->lineCount : 1;
        lines_.erase(lines_.begin(), lines_.begin() + static_cast<std::ptrdiff_t>(used));
        if (candidate)
            zones_.push_back(std::move(candidate->zone));
    }

    const ZoneRules& rules_;
    std::vector<ZoneLineReading> lines_;
    std::vector<MachineReadableZone> zones_;
};

// A zone that was found but not read. What it seems to say is not told: digits pass by chance, and
// names have none.
std::optional<MachineReadableZone> refused(const ZoneReading& reading) {
    if (reading.lines.empty())
        return std::nullopt;
    constexpr std::size_t kLongLine = 40;  // between the layouts of 36 and of 44
    const auto& first = reading.lines.front().characters;
    const bool isLong = first.size() > kLongLine;
    const bool isVisa = !first.empty() && first[0].choices[0].character == 'V';
    MachineReadableZone zone;
    zone.format = reading.lines.size() == 1   ? ZoneFormat::drivingLicence
                  : reading.lines.size() == 3 ? ZoneFormat::td1
                  : isVisa                    ? (isLong ? ZoneFormat::mrvA : ZoneFormat::mrvB)
                  : isLong                    ? ZoneFormat::td3
                                              : ZoneFormat::td2;
    for (const ZoneLineReading& line : reading.lines)
        zone.lines.push_back({.corners = line.corners});
    const bool isSmall = reading.legibility == ZoneReading::Legibility::tooSmall;
    zone.problems.push_back(
        {.kind = isSmall ? ZoneProblem::Kind::tooSmall : ZoneProblem::Kind::blurred});
    return zone;
}

}  // namespace

std::vector<MachineReadableZone> parseZones(std::string_view text, const ZoneRules& rules) try {
    ZoneSearch search(rules);
    zone::forEachLine(text,
                      [&](std::optional<ZoneLineReading> line) { search.take(std::move(line)); });
    return search.finish();
} catch (const std::bad_alloc&) {
    return {};
}

std::optional<MachineReadableZone> parseZone(const ZoneReading& reading,
                                             const ZoneRules& rules) try {
    if (reading.lines.size() > zone::kMostLines)
        return std::nullopt;
    std::optional<MachineReadableZone> zone;
    if (reading.legibility != ZoneReading::Legibility::readable)
        zone = refused(reading);
    else if (auto candidate = zone::zoneAt(reading.lines, true, rules))
        zone = std::move(candidate->zone);
    if (zone)
        zone->pixelsPerCharacter = reading.pixelsPerCharacter;
    return zone;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

}  // namespace kestrelid
