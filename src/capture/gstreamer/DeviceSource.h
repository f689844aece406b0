#pragma once

#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/DeviceWatch.h"
#include "capture/gstreamer/GStreamerInput.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::capture {

// A camera of the machine.
class DeviceSource final : public CameraSource, public std::enable_shared_from_this<DeviceSource> {
public:
    DeviceSource(std::shared_ptr<DeviceWatch> watch, DeviceHandle device,
                 std::vector<VideoFormat> formats);

    // Tries whether the device opens, and lets it go again.
    [[nodiscard]] OpenedSource open() const;

    const std::vector<VideoFormat>& formats() const override { return formats_; }
    bool isFile() const override { return false; }
    Assembled assemble(const VideoFormat& format) const override;
    std::shared_ptr<const void> watchRemoval(std::function<void()> removed) const override;

private:
    const std::shared_ptr<DeviceWatch> watch_;
    const DeviceHandle device_;
    const std::vector<VideoFormat> formats_;
};

struct FoundCamera {
    std::string name;
    Mounting mounting;
    std::shared_ptr<const DeviceSource> source;
};

// The cameras that are there now and have a format that can be used.
[[nodiscard]] std::vector<FoundCamera> findCameras(const std::shared_ptr<DeviceWatch>& watch);

}  // namespace kestrelid::capture
