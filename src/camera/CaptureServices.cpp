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

}  // namespace kestrelid
