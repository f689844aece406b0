#pragma once

#include "camera/FrameWatch.h"

#include <kestrelid/VisionServices.h>
#include <kestrelid/ZoneTracker.h>

#include <functional>
#include <memory>

namespace kestrelid::camera {

// Looks for a machine-readable zone.
class ZoneWatch final : public FrameWatch {
public:
    // Gets what is known after a frame that changed it. The watch's queue.
    using Tell = std::function<void(const LiveZone& zone)>;

    // zones, queue, clock: not null.
    ZoneWatch(std::shared_ptr<ZoneService> zones, ZoneRules rules,
              std::shared_ptr<DispatchQueue> queue, Clock clock, Tell tell);

private:
    void lookNow(const Bitmap& frame, Time takenAt) override;
    void forgetNow() override;

    const std::shared_ptr<ZoneService> zones_;
    const Tell tell_;
    ZoneTracker tracker_;  // the queue's
};

}  // namespace kestrelid::camera
