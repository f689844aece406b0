#pragma once

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <optional>
#include <string>

namespace kestrelid::cli {

// Passes calls on to a capture platform and keeps the name of the camera that it gave. Read it once
// a session is ready or has failed; nothing is written any more then.
class CaptureRecorder final : public CapturePlatform {
public:
    explicit CaptureRecorder(std::shared_ptr<CapturePlatform> platform);

    std::shared_ptr<CaptureSession> makeSession() override;
    std::shared_ptr<PhotoOutput> makePhotoOutput() override;
    std::shared_ptr<VideoDataOutput> makeVideoDataOutput() override;
    std::shared_ptr<CaptureDevice> defaultVideoDevice() override;
    std::variant<std::shared_ptr<CaptureInput>, CaptureError>
    makeInput(std::shared_ptr<CaptureDevice> device) override;

    // Of the device that was found. Empty if there was none.
    [[nodiscard]] const std::optional<std::string>& deviceName() const { return deviceName_; }

private:
    const std::shared_ptr<CapturePlatform> platform_;
    std::optional<std::string> deviceName_;
};

}  // namespace kestrelid::cli
