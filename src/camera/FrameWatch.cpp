#include "camera/FrameWatch.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrelid::camera {

FrameWatch::FrameWatch(std::shared_ptr<DispatchQueue> queue, Clock clock, Pace pace)
    : queue_(std::move(queue)), clock_(std::move(clock)), pace_(pace),
      startedAt_(-std::numeric_limits<double>::infinity()) {}

bool FrameWatch::isDue(Time now) const noexcept {
    if (isBusy_)
        return false;
    const Time withRest((1.0 + pace_.restPerLook) * took_);
    return now - startedAt_ >= std::max(pace_.interval, withRest);
}

void FrameWatch::look(Bitmap frame, Time now) {
    isBusy_ = true;
    try {
        queue_->async([weak = weak_from_this(), frame = std::move(frame), now] {
            const auto self = weak.lock();
            if (!self)
                return;
            try {
                self->lookNow(frame, now);
            } catch (...) {
                // A frame that memory is too short for: another one follows.
            }
            self->took_ = (self->clock_() - now).count();
            self->isBusy_ = false;
        });
        startedAt_ = now;
    } catch (...) {
        isBusy_ = false;
        throw;
    }
}

void FrameWatch::forget() {
    queue_->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self)
            return;
        try {
            self->forgetNow();
        } catch (...) {
            // Told by the next look, or forgotten again.
        }
    });
}

}  // namespace kestrelid::camera
