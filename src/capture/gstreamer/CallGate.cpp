#include "capture/gstreamer/CallGate.h"

#include <algorithm>
#include <chrono>

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

bool CallGate::close() {
    constexpr std::chrono::milliseconds kPatience{500};
    std::unique_lock lock(mutex_);
    closed_ = true;
    const auto mine = std::count(inside_.begin(), inside_.end(), std::this_thread::get_id());
    left_.wait_for(lock, kPatience,
                   [&] { return static_cast<std::ptrdiff_t>(inside_.size()) <= mine; });
    return mine == 0;
}

}  // namespace kestrelid::capture
