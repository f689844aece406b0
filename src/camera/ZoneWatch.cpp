#include "camera/ZoneWatch.h"

#include <algorithm>
#include <utility>

namespace kestrelid::camera {

namespace {

// Two looks of a page that is laid down are enough for a strict answer.
constexpr FrameWatch::Pace kPace{.interval = FrameWatch::Time(0.15), .restPerLook = 0.0};

// Around the zone as it last stood, and as much again: a page held in a hand moves little from one
// look to the next, and a small part of a frame is searched in a third of the time.
RectangleObservation around(const MachineReadableZone& zone) {
    const auto& [topLeft, topRight, lowerRight, lowerLeft] = [&zone] {
        const auto& first = zone.lines.front().corners;
        const auto& last = zone.lines.back().corners;
        return std::array{first[0], first[1], last[2], last[3]};
    }();
    const auto beyond = [](const NormalizedPoint& point, const NormalizedPoint& from,
                           double share) {
        return NormalizedPoint{point.x + (point.x - from.x) * share,
                               point.y + (point.y - from.y) * share};
    };
    constexpr double kAbove = 1.0;   // times the zone's height
    constexpr double kBeside = 0.1;  // times its length
    const auto corner = [&](const NormalizedPoint& point, const NormalizedPoint& along,
                            const NormalizedPoint& across) {
        const NormalizedPoint wide = beyond(point, along, kBeside);
        return NormalizedPoint{wide.x + (point.x - across.x) * kAbove,
                               wide.y + (point.y - across.y) * kAbove};
    };
    RectangleObservation area;
    area.corners = {corner(topLeft, topRight, lowerLeft), corner(topRight, topLeft, lowerRight),
                    corner(lowerRight, lowerLeft, topRight),
                    corner(lowerLeft, lowerRight, topLeft)};
    area.confidence = 1.0f;
    return area;
}

}  // namespace

ZoneWatch::ZoneWatch(std::shared_ptr<ZoneService> zones, ZoneRules rules,
                     std::shared_ptr<DispatchQueue> queue, Clock clock, Tell tell)
    : FrameWatch(std::move(queue), std::move(clock), kPace), zones_(std::move(zones)),
      tell_(std::move(tell)), tracker_(std::move(rules)) {}

void ZoneWatch::forgetNow() {
    tracker_.forget();
    tell_(tracker_.live());
}

void ZoneWatch::lookNow(const Bitmap& frame, Time /*takenAt*/) {
    ZoneRequest request;
    if (tracker_.live().zone && !tracker_.live().zone->lines.empty())
        request.outlines.push_back(around(*tracker_.live().zone));
    const ZoneResult result = zones_->perform(frame, request);
    const auto* readings = std::get_if<std::vector<ZoneReading>>(&result);
    const ZoneReading* first = nullptr;
    if (readings && !readings->empty()) {
        const auto readable = std::ranges::find(*readings, ZoneReading::Legibility::readable,
                                                &ZoneReading::legibility);
        first = &*(readable == readings->end() ? readings->begin() : readable);
    }
    if (tracker_.see(first))
        tell_(tracker_.live());
}

}  // namespace kestrelid::camera
