#pragma once

#include "capture/gstreamer/CameraSource.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <string>
#include <utility>

namespace kestrelid::capture {

// How a camera is mounted.
struct Mounting {
    Orientation orientation = Orientation::up;
    bool isMirrored = false;
};

class GStreamerInput final : public CaptureInput {
public:
    // device: tells it from other devices, in words of its platform.
    GStreamerInput(std::shared_ptr<const CameraSource> source, Mounting mounting,
                   std::string device)
        : source_(std::move(source)), mounting_(mounting), device_(std::move(device)) {}

    [[nodiscard]] const CameraSource& source() const { return *source_; }
    [[nodiscard]] const Mounting& mounting() const { return mounting_; }
    // By its name, or although a twin that was unplugged has left it another one.
    [[nodiscard]] bool isSameDevice(const GStreamerInput& other) const {
        return device_ == other.device_ || source_->isSameAs(*other.source_);
    }
    // Also not its twin, nor the device that was plugged in again.
    [[nodiscard]] bool isVerySameDevice(const GStreamerInput& other) const {
        return source_->isFile() ? device_ == other.device_ : source_->isSameAs(*other.source_);
    }

    // As its device is announced now; null while it is not.
    [[nodiscard]] std::shared_ptr<const GStreamerInput> announced() const {
        auto source = source_->announced();
        return source
                   ? std::make_shared<const GStreamerInput>(std::move(source), mounting_, device_)
                   : nullptr;
    }

private:
    const std::shared_ptr<const CameraSource> source_;
    const Mounting mounting_;
    const std::string device_;
};

}  // namespace kestrelid::capture
