#include <kestrelid/CameraOptions.h>
#include <kestrelid/CaptureServices.h>

namespace kestrelid {

CameraAuthorization::~CameraAuthorization() = default;
CaptureDevice::~CaptureDevice() = default;
CaptureInput::~CaptureInput() = default;
CaptureOutput::~CaptureOutput() = default;
PixelBuffer::~PixelBuffer() = default;
SampleBuffer::~SampleBuffer() = default;
SampleBufferDelegate::~SampleBufferDelegate() = default;
PhotoCaptureDelegate::~PhotoCaptureDelegate() = default;
PreviewSurface::~PreviewSurface() = default;
CaptureSession::~CaptureSession() = default;
CapturePlatform::~CapturePlatform() = default;

CameraStatus CaptureSession::status() const {
    return {.state = isRunning() ? CameraState::live : CameraState::idle, .cause = {}};
}

void CaptureSession::observeStatus(std::function<void()> /*observer*/) {}

std::string_view keyOf(CameraState state) noexcept {
    switch (state) {
    case CameraState::idle:
        return "idle";
    case CameraState::starting:
        return "starting";
    case CameraState::live:
        return "live";
    case CameraState::lost:
        return "lost";
    case CameraState::busy:
        return "busy";
    case CameraState::failed:
        return "failed";
    case CameraState::denied:
        return "denied";
    case CameraState::absent:
        return "absent";
    }
    return "idle";
}

std::string_view keyOf(CameraPosition position) noexcept {
    switch (position) {
    case CameraPosition::back:
        return "back";
    case CameraPosition::front:
        return "front";
    case CameraPosition::external:
        return "external";
    case CameraPosition::unknown:
        break;
    }
    return "unknown";
}

}  // namespace kestrelid
