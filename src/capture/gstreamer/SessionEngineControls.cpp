#include "capture/gstreamer/SessionEngine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <utility>

namespace kestrelid::capture {

std::vector<CameraControlStatus> SessionEngine::controls() const {
    const std::lock_guard lock(mutex_);
    return controls_;
}

void SessionEngine::setControl(CameraControl control, std::optional<double> value) {
    const std::lock_guard lock(mutex_);
    const auto known =
        std::find_if(controls_.begin(), controls_.end(),
                     [&](const CameraControlStatus& status) { return status.control == control; });
    if (known == controls_.end() || (value ? std::isnan(*value) : !known->hasAutomatic))
        return;
    if (value)
        value = std::clamp(*value, 0.0, 1.0);
    wishes_.at(static_cast<std::size_t>(control)) = {.isMade = true, .isDue = true, .value = value};
    changed_.notify_all();
}

// False if there was nothing to do.
bool SessionEngine::tendControls(Lock& lock) try {
    const bool seeks = std::exchange(seeksControls_, false);
    if (seeks)
        findControls(lock);
    if (!fulfilWishes(lock) && !seeks)
        return false;
    if (!deviceControls_)
        return true;
    std::vector<CameraControlStatus> statuses;
    {
        const DriverCall call(*this, lock);
        statuses = deviceControls_->statuses();
    }
    const bool runs = phase_ == Phase::running;  // unless the host has given up meanwhile
    if (runs && statuses != std::exchange(controls_, statuses))
        tellControls(lock);
    return true;
} catch (const std::exception&) {
    return true;  // memory is short; frames flow on
}

// The device's node is opened beside the stream, once that flows: what allows one opening only
// then refuses this one.
void SessionEngine::findControls(Lock& lock) {
    const CameraSource& source = active_->source();
    if (!wished_ || !wished_->isSameDevice(*active_))
        wishes_ = {};
    wished_ = active_;
    for (Wish& wish : wishes_)
        wish.isDue = wish.isMade;
    const DriverCall call(*this, lock);
    if (const std::string node = source.controlNode(); !node.empty())
        deviceControls_ = std::make_unique<DeviceControls>(openControls_(node));
}

// True if the driver was told something.
bool SessionEngine::fulfilWishes(Lock& lock) {
    bool isTold = false;
    for (std::size_t index = 0; index < wishes_.size() && deviceControls_; ++index) {
        if (stopping_ || removed_ || !std::exchange(wishes_.at(index).isDue, false))
            continue;
        const auto control = static_cast<CameraControl>(index);
        const std::optional<double> value = wishes_.at(index).value;
        if (control == CameraControl::torch)
            isLit_ = value > 0.0;
        const DriverCall call(*this, lock);
        deviceControls_->set(control, value);
        isTold = true;
    }
    return isTold;
}

// What was wished stays for the same device, but no torch goes on by itself.
void SessionEngine::dropControls(Lock& lock) {
    seeksControls_ = false;
    const bool hadSome = !controls_.empty();
    controls_.clear();
    Wish& torch = wishes_.at(static_cast<std::size_t>(CameraControl::torch));
    torch.value = 0.0;
    for (Wish& wish : wishes_)
        wish.isDue = false;
    if (deviceControls_) {
        const DriverCall call(*this, lock);
        if (std::exchange(isLit_, false))
            deviceControls_->set(CameraControl::torch, 0.0);
        deviceControls_.reset();
    }
    if (hadSome)
        tellControls(lock);
}

void SessionEngine::tellControls(Lock& lock) {
    lock.unlock();
    try {
        board_->tell();
    } catch (const std::exception&) {
        // Without memory nobody is told; the next change is.
    }
    lock.lock();
}

}  // namespace kestrelid::capture
