#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/VisionServices.h>
#include <kestrelid/ZoneTracker.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace kestrelid::camera {

// Looks for a machine-readable zone in frames of a camera, one at a time, on a queue of its own.
class ZoneWatch : public std::enable_shared_from_this<ZoneWatch> {
public:
    // Gets what is known after a frame that changed it. The watch's queue.
    using Tell = std::function<void(const LiveZone& zone)>;

    // zones, queue: not null.
    ZoneWatch(std::shared_ptr<ZoneService> zones, ZoneRules rules,
              std::shared_ptr<DispatchQueue> queue, Tell tell);

    // Whether an earlier frame is still looked at. Any thread.
    [[nodiscard]] bool isBusy() const noexcept { return isBusy_; }

    // Frames that were looked at so far. Any thread.
    [[nodiscard]] std::uint64_t looks() const noexcept { return looks_; }

    // Forgets the page and tells it, later. Any thread. Throws if the queue cannot take it.
    void forget();

    // Looks at the frame later. Call it while the watch is not busy; any thread. Throws if the
    // queue cannot take it.
    void look(Bitmap frame);

private:
    void lookNow(const Bitmap& frame);

    const std::shared_ptr<ZoneService> zones_;
    const std::shared_ptr<DispatchQueue> queue_;
    const Tell tell_;
    std::atomic<bool> isBusy_ = false;
    std::atomic<std::uint64_t> looks_ = 0;
    ZoneTracker tracker_;  // the queue's
};

}  // namespace kestrelid::camera
