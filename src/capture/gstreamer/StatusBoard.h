#pragma once

#include "capture/gstreamer/CallGate.h"

#include <kestrelid/CameraStatus.h>

#include <functional>
#include <mutex>
#include <string_view>

namespace kestrelid::capture {

// What a session's camera is doing, and who is told. Thread: any.
class StatusBoard {
public:
    [[nodiscard]] CameraStatus status() const;

    // Tells the observer where that is another status.
    void post(CameraState state, std::string_view cause) noexcept;

    // Replaces the former one; a call of that may still be under way.
    void observe(std::function<void()> observer);

    // Tells the observer of something else that has changed.
    void tell();

    // As CallGate::close().
    void close(std::chrono::steady_clock::time_point limit) { calls_.close(limit); }

private:
    CallGate calls_;
    std::mutex telling_;  // one call at a time
    mutable std::mutex mutex_;
    CameraStatus status_;
    std::function<void()> observer_;
};

}  // namespace kestrelid::capture
