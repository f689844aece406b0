#pragma once

#include "capture/CameraRemote.h"
#include "capture/controls/V4l2Node.h"
#include "capture/gstreamer/Patience.h"

#include <kestrelid/CameraOptions.h>
#include <kestrelid/CaptureServices.h>
#include <kestrelid/ServiceStatus.h>

#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::capture {

class DeviceWatch;
struct FoundCamera;
struct Mounting;

// The machine's cameras, or one file, by GStreamer.
class GStreamerCapturePlatform final : public CapturePlatform {
public:
    // openRemote: for cameras that the machine does not show otherwise; empty: there is none.
    explicit GStreamerCapturePlatform(CameraOptions options, OpenCameraRemote openRemote = {},
                                      const Patience& patience = {},
                                      OpenControlNodes openControls = openV4l2Nodes);
    GStreamerCapturePlatform(const GStreamerCapturePlatform&) = delete;
    GStreamerCapturePlatform& operator=(const GStreamerCapturePlatform&) = delete;
    ~GStreamerCapturePlatform() override;

    std::shared_ptr<CaptureSession> makeSession() override;
    std::shared_ptr<PhotoOutput> makePhotoOutput() override;
    std::shared_ptr<VideoDataOutput> makeVideoDataOutput() override;
    std::shared_ptr<CaptureDevice> defaultVideoDevice() override;
    std::variant<std::shared_ptr<CaptureInput>, CaptureError>
    makeInput(std::shared_ptr<CaptureDevice> device) override;

    // The cameras, or the file.
    std::vector<CameraDescription> cameras() override;

    // GStreamer, its plugins, and the cameras or the file.
    [[nodiscard]] std::vector<ServiceStatus> diagnose();

private:
    [[nodiscard]] std::vector<FoundCamera> find();
    [[nodiscard]] Mounting mounting(const Mounting& known) const;

    const CameraOptions options_;
    const OpenCameraRemote openRemote_;
    const Patience patience_;
    const OpenControlNodes openControls_;
    std::mutex mutex_;
    std::shared_ptr<DeviceWatch> watch_;  // once cameras were asked for
};

}  // namespace kestrelid::capture
