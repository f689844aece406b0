#include "capture/gstreamer/StatusBoard.h"

#include <utility>

namespace kestrelid::capture {

CameraStatus StatusBoard::status() const {
    const std::lock_guard lock(mutex_);
    return status_;
}

void StatusBoard::post(CameraState state, std::string_view cause) noexcept {
    try {
        CameraStatus posted{.state = state, .cause = std::string(cause)};
        {
            const std::lock_guard lock(mutex_);
            if (posted == status_)
                return;
            status_ = std::move(posted);
        }
        tell();
    } catch (...) {
        // Without memory for the cause nobody is told; the next change is.
    }
}

void StatusBoard::observe(std::function<void()> observer) {
    const std::lock_guard lock(mutex_);
    observer_ = std::move(observer);
}

void StatusBoard::tell() {
    const std::lock_guard oneAtATime(telling_);
    std::function<void()> observer;
    {
        const std::lock_guard lock(mutex_);
        observer = observer_;
    }
    const CallGate::Pass pass(calls_);
    if (pass && observer)
        observer();
}

}  // namespace kestrelid::capture
