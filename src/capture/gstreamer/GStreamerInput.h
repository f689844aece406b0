#pragma once

#include "capture/gstreamer/CameraSource.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <utility>

namespace kestrelid::capture {

// How a camera is mounted.
struct Mounting {
    Orientation orientation = Orientation::up;
    bool isMirrored = false;
};

class GStreamerInput final : public CaptureInput {
public:
    GStreamerInput(std::shared_ptr<const CameraSource> source, Mounting mounting)
        : source_(std::move(source)), mounting_(mounting) {}

    [[nodiscard]] const CameraSource& source() const { return *source_; }
    [[nodiscard]] const Mounting& mounting() const { return mounting_; }

private:
    const std::shared_ptr<const CameraSource> source_;
    const Mounting mounting_;
};

}  // namespace kestrelid::capture
