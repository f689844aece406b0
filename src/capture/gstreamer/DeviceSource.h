#pragma once

#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/DeviceWatch.h"
#include "capture/gstreamer/GStreamerInput.h"

#include <kestrelid/CameraOptions.h>

#include <memory>
#include <string>
#include <vector>

namespace kestrelid::capture {

using Devices = std::vector<DeviceHandle>;

// A camera of the machine.
class DeviceSource final : public CameraSource {
public:
    // name: as the device announces it, which others may do too. beside: all that were announced
    // then.
    DeviceSource(std::shared_ptr<DeviceWatch> watch, GstDevice* device, std::string name,
                 std::shared_ptr<const Devices> beside, std::vector<VideoFormat> formats);

    const std::vector<VideoFormat>& formats() const override { return formats_; }
    bool isSameAs(const CameraSource& other) const override;
    bool isFile() const override { return false; }
    Assembled assemble(const VideoFormat& format) const override;
    std::shared_ptr<const void> watchRemoval(std::function<void()> removed) const override;
    std::shared_ptr<const CameraSource> announced() const override;
    std::string controlNode() const override;

private:
    [[nodiscard]] bool stoodBeside(const DeviceSource& other) const;

    const std::shared_ptr<DeviceWatch> watch_;
    GstDevice* const device_;  // held by beside_
    const std::string name_;
    const std::shared_ptr<const Devices> beside_;
    const std::vector<VideoFormat> formats_;
};

struct FoundCamera {
    std::string name;
    Mounting mounting;
    CameraPosition position = CameraPosition::unknown;
    bool isInfrared = false;
    std::string obstacle;  // why it cannot be used; empty: it can
    std::shared_ptr<const DeviceSource> source;
};

// The cameras that are there now, best first.
[[nodiscard]] std::vector<FoundCamera> findCameras(const std::shared_ptr<DeviceWatch>& watch);

}  // namespace kestrelid::capture
