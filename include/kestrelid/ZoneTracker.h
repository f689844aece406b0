#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/MachineReadableZone.h>

#include <optional>
#include <utility>
#include <vector>

namespace kestrelid {

/// What the frames of a camera say of the zone in view. Personal data: never log it.
struct LiveZone {
    /// Joined from all frames of this page; none while none is in view. Its corners are those of
    /// the last frame.
    std::optional<MachineReadableZone> zone{};

    int frames = 0;  ///< that were joined; 0 while the zone was found but could not be read

    /// The strict answer: trustworthy, and seen in at least two frames.
    [[nodiscard]] bool isStrict() const noexcept {
        constexpr int kFewest = 2;  // a glitch of one frame is no answer
        return zone && zone->isTrustworthy() && frames >= kFewest;
    }
};

/// Joins the readings of one page over frames, character by character, each weighted by how surely
/// it was read. A page that differs in a quarter of its characters is another one and starts anew;
/// after three frames without a zone the page has left and is forgotten. Thread: one at a time.
class KESTRELID_EXPORT ZoneTracker {
public:
    /// rules: for all its zones.
    explicit ZoneTracker(ZoneRules rules = {}) : rules_(std::move(rules)) {}

    /// What a frame showed; null: no zone. Returns whether live() has changed. Memory that is short
    /// makes it a frame without news.
    bool see(const ZoneReading* reading) noexcept;

    /// Forgets the page. Returns whether one was known.
    bool forget() noexcept;

    /// What is known after the last frame.
    [[nodiscard]] const LiveZone& live() const noexcept { return live_; }

private:
    bool join(const ZoneReading& reading);

    ZoneRules rules_;
    LiveZone live_;
    std::vector<Wiped<float>> sums_{};  // by line: of each place, for each character
    ZoneReading joined_{};
    int framesWithout_ = 0;
};

}  // namespace kestrelid
