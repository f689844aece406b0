#include "capture/gstreamer/CallGate.h"

#include <algorithm>

namespace kestrelid::capture {

bool CallGate::enter() {
    const std::lock_guard lock(mutex_);
    if (closed_)
        return false;
    inside_.push_back(std::this_thread::get_id());
    return true;
}

void CallGate::leave() {
    const std::lock_guard lock(mutex_);
    inside_.erase(std::find(inside_.begin(), inside_.end(), std::this_thread::get_id()));
    left_.notify_all();
}

bool CallGate::close(std::chrono::steady_clock::time_point limit) {
    std::unique_lock lock(mutex_);
    closed_ = true;
    const auto mine = std::count(inside_.begin(), inside_.end(), std::this_thread::get_id());
    left_.wait_until(lock, limit,
                     [&] { return static_cast<std::ptrdiff_t>(inside_.size()) <= mine; });
    return mine == 0;
}

}  // namespace kestrelid::capture
