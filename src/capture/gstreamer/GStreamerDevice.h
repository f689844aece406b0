#pragma once

#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/GStreamerInput.h"

#include <kestrelid/CaptureServices.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kestrelid::capture {

// A camera or file before it is opened.
class GStreamerDevice final : public CaptureDevice {
public:
    // id: tells it from other devices.
    GStreamerDevice(std::string id, std::string name, Mounting mounting,
                    std::function<OpenedSource()> open)
        : id_(std::move(id)), name_(std::move(name)), mounting_(mounting), open_(std::move(open)) {}

    std::string name() const override { return name_; }
    Orientation orientation() const override { return mounting_.orientation; }
    bool isMirrored() const override { return mounting_.isMirrored; }

    [[nodiscard]] const std::string& id() const { return id_; }
    [[nodiscard]] const Mounting& mounting() const { return mounting_; }
    [[nodiscard]] OpenedSource open() const { return open_(); }

private:
    const std::string id_;
    const std::string name_;
    const Mounting mounting_;
    const std::function<OpenedSource()> open_;
};

}  // namespace kestrelid::capture
