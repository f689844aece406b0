#include "camera/ZoneWatch.h"

#include <algorithm>
#include <utility>

namespace kestrelid::camera {

namespace {

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
                     std::shared_ptr<DispatchQueue> queue, Tell tell)
    : zones_(std::move(zones)), queue_(std::move(queue)), tell_(std::move(tell)),
      tracker_(std::move(rules)) {}

void ZoneWatch::look(Bitmap frame) {
    isBusy_ = true;
    try {
        queue_->async([weak = weak_from_this(), frame = std::move(frame)] {
            if (const auto self = weak.lock()) {
                self->lookNow(frame);
                self->isBusy_ = false;
            }
        });
    } catch (...) {
        isBusy_ = false;
        throw;
    }
}

void ZoneWatch::forget() {
    queue_->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        self->tracker_.forget();
        self->tell_(self->tracker_.live());
    });
}

void ZoneWatch::lookNow(const Bitmap& frame) try {
    ++looks_;
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
} catch (...) {
    // A frame that memory is too short for, or a host's service that throws: another one follows.
}

}  // namespace kestrelid::camera
