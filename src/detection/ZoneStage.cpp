#include "detection/ZoneStage.h"

#include "detection/Findings.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrelid::detection {

std::vector<MachineReadableZone> readZones(ZoneService& service, const Console& console,
                                           const Bitmap& bitmap,
                                           const std::vector<RectangleObservation>& outlines,
                                           const ZoneRules& rules) {
    ZoneRequest request{.outlines = outlines};
    std::ranges::stable_sort(request.outlines, [](const auto& a, const auto& b) {
        return a.boundingBox.area() > b.boundingBox.area();
    });
    const std::vector<ZoneReading> readings =
        findings([&] { return service.perform(bitmap, request); },
                 {.reported = kZoneRequestFailed, .notPerformed = kZoneRequestFailed}, console);
    std::vector<MachineReadableZone> zones;
    for (const ZoneReading& reading : readings) {
        if (auto zone = parseZone(reading, rules))
            zones.push_back(*std::move(zone));
    }
    return zones;
}

std::vector<TextObservation> inPicture(const std::vector<TextObservation>& lines,
                                       const PixelRect& region, const Bitmap& picture) {
    const double width = picture.width();
    const double height = picture.height();
    std::vector<TextObservation> result;
    for (const TextObservation& line : lines) {
        const NormalizedRect& box = line.boundingBox();
        const double bottom = region.y + region.height;  // from the picture's top
        result.emplace_back(NormalizedRect{.x = (region.x + box.x * region.width) / width,
                                           .y = 1.0 - (bottom - box.y * region.height) / height,
                                           .width = box.width * region.width / width,
                                           .height = box.height * region.height / height},
                            line.topCandidates(std::numeric_limits<int>::max()));
    }
    return result;
}

}  // namespace kestrelid::detection
