#pragma once

#include "capture/CameraRemote.h"
#include "capture/controls/V4l2Node.h"
#include "capture/gstreamer/Patience.h"
#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CameraOptions.h>
#include <kestrelid/CaptureServices.h>
#include <kestrelid/ServiceStatus.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
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
    std::shared_ptr<CaptureDevice> videoDevice(const std::string& name) override;
    std::variant<std::shared_ptr<CaptureInput>, CaptureError>
    makeInput(std::shared_ptr<CaptureDevice> device) override;

    // The cameras, or the file.
    std::vector<CameraDescription> cameras() override;
    // Of a file nothing is ever told.
    std::shared_ptr<const void> observeCameras(std::function<void()> observer) override;

    // GStreamer, its plugins, and the cameras or the file.
    [[nodiscard]] std::vector<ServiceStatus> diagnose();

private:
    // Follows the watches, of which others may take the place.
    struct Observer;

    [[nodiscard]] std::vector<FoundCamera> find();
    void attend(Observer& observer) const;  // with the lock
    void attendAll();                       // with the lock
    [[nodiscard]] const FoundCamera* ownAmong(const std::vector<FoundCamera>& found) const;
    [[nodiscard]] Mounting mounting(const Mounting& known) const;

    const CameraOptions options_;
    const OpenCameraRemote openRemote_;
    const Patience patience_;
    const OpenControlNodes openControls_;
    std::mutex mutex_;
    std::shared_ptr<DeviceWatch> watch_;        // once cameras were asked for
    std::shared_ptr<DeviceWatch> remoteWatch_;  // the last one
    std::vector<std::weak_ptr<Observer>> observers_;
    std::string ownCamera_;  // the name of the one that the options chose last
    std::optional<std::vector<VideoFormat>> fileFormats_;  // once the file was opened
};

}  // namespace kestrelid::capture
