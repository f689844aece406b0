#include "apps/cli/CaptureRecorder.h"

#include <utility>

namespace kestrelid::cli {

CaptureRecorder::CaptureRecorder(std::shared_ptr<CapturePlatform> platform)
    : platform_(std::move(platform)) {}

std::shared_ptr<CaptureSession> CaptureRecorder::makeSession() {
    return platform_->makeSession();
}

std::shared_ptr<PhotoOutput> CaptureRecorder::makePhotoOutput() {
    return platform_->makePhotoOutput();
}

std::shared_ptr<VideoDataOutput> CaptureRecorder::makeVideoDataOutput() {
    return platform_->makeVideoDataOutput();
}

std::shared_ptr<CaptureDevice> CaptureRecorder::defaultVideoDevice() {
    std::shared_ptr<CaptureDevice> device = platform_->defaultVideoDevice();
    deviceName_ = device ? std::optional(device->name()) : std::nullopt;
    return device;
}

std::variant<std::shared_ptr<CaptureInput>, CaptureError>
CaptureRecorder::makeInput(std::shared_ptr<CaptureDevice> device) {
    return platform_->makeInput(std::move(device));
}

}  // namespace kestrelid::cli
