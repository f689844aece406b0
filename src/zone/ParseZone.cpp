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
    auto candidate = zone::zoneAt(reading.lines, true, rules);
    return candidate ? std::optional(std::move(candidate->zone)) : std::nullopt;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

}  // namespace kestrelid
