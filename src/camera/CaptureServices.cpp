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

bool CaptureSession::replaceInput(std::shared_ptr<CaptureInput> /*input*/) {
    return false;
}

std::vector<CameraControlStatus> CaptureSession::controls() const {
    return {};
}

void CaptureSession::setControl(CameraControl /*control*/, std::optional<double> /*value*/) {}

std::shared_ptr<CaptureDevice> CapturePlatform::videoDevice(const std::string& name) {
    auto device = defaultVideoDevice();
    return device && device->name() == name ? device : nullptr;
}

std::vector<CameraDescription> CapturePlatform::cameras() {
    return {};
}

std::shared_ptr<const void> CapturePlatform::observeCameras(std::function<void()> /*observer*/) {
    return nullptr;
}

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

std::string_view keyOf(CameraControl control) noexcept {
    switch (control) {
    case CameraControl::zoom:
        return "zoom";
    case CameraControl::focus:
        return "focus";
    case CameraControl::exposure:
        return "exposure";
    case CameraControl::torch:
        break;
    }
    return "torch";
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
