#pragma once

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <optional>
#include <string>

namespace kestrelid::cli {

// Passes calls on to a capture platform and keeps the reason if it gave no camera, which a
// CameraManager does not report. Read it once a session is ready or has failed; nothing is written
// any more then.
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
    // Why it could not be opened.
    [[nodiscard]] const std::optional<CaptureError>& error() const { return error_; }

private:
    const std::shared_ptr<CapturePlatform> platform_;
    std::optional<std::string> deviceName_;
    std::optional<CaptureError> error_;
};

}  // namespace kestrelid::cli
