#pragma once

#include "camera/FrameWatch.h"

#include <kestrelid/Guidance.h>
#include <kestrelid/VisionServices.h>

#include <functional>
#include <memory>

namespace kestrelid::camera {

// Looks for a page, and for what would make a better photo of it. Takes a quarter of a core at
// most.
class PageWatch final : public FrameWatch {
public:
    // Gets what is known after each frame. The watch's queue.
    using Tell = std::function<void(const LivePage& page)>;

    // outlines, queue, clock: not null.
    PageWatch(std::shared_ptr<RectangleService> outlines, GuidanceLimits limits,
              std::shared_ptr<DispatchQueue> queue, Clock clock, Tell tell);

private:
    void lookNow(const Bitmap& frame, Time takenAt) override;
    void forgetNow() override;

    const std::shared_ptr<RectangleService> outlines_;
    const Tell tell_;
    PageTracker tracker_;  // the queue's
};

}  // namespace kestrelid::camera
