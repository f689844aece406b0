#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/DispatchQueue.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace kestrelid::camera {

// Looks at frames of a camera, one at a time, on a queue of its own. What is looked for, and whom
// it is told, is up to those that derive from it.
class FrameWatch : public std::enable_shared_from_this<FrameWatch> {
public:
    // Seconds on a clock that never goes back.
    using Time = std::chrono::duration<double>;
    using Clock = std::function<Time()>;  // any thread

    struct Pace {
        Time interval;       // from the start of a look to that of the next one, at least
        double restPerLook;  // times the look's own duration, after its end, at least
    };

    // queue, clock: not null.
    FrameWatch(std::shared_ptr<DispatchQueue> queue, Clock clock, Pace pace);
    FrameWatch(const FrameWatch&) = delete;
    FrameWatch& operator=(const FrameWatch&) = delete;
    virtual ~FrameWatch() = default;

    // Whether a frame of now is to be looked at. Frame queue.
    [[nodiscard]] bool isDue(Time now) const noexcept;

    // Looks at the frame later. Call it when a look is due; frame queue. Throws if the queue cannot
    // take it.
    void look(Bitmap frame, Time now);

    // Forgets what was seen and tells it, later. Any thread. Throws if the queue cannot take it.
    void forget();

private:
    // Both: the watch's queue; what they throw becomes nothing.
    virtual void lookNow(const Bitmap& frame, Time takenAt) = 0;
    virtual void forgetNow() = 0;

    const std::shared_ptr<DispatchQueue> queue_;
    const Clock clock_;
    const Pace pace_;
    std::atomic<bool> isBusy_ = false;
    Time startedAt_;                  // frame queue
    std::atomic<double> took_ = 0.0;  // seconds, the last look; written before isBusy_
};

}  // namespace kestrelid::camera
