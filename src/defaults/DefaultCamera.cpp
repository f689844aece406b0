#include <kestrelid/DefaultCamera.h>

#include "base/AsioQueue.h"
#include "capture/CameraFile.h"
#include "capture/gstreamer/GStreamerCapturePlatform.h"
#include "capture/permission/CameraPermission.h"

#include <algorithm>
#include <semaphore>
#include <thread>
#include <utility>

namespace kestrelid {

namespace {

std::shared_ptr<CameraAuthorization> makeAuthorization(const CameraOptions& options) {
    if (capture::cameraFile(options))
        return std::make_shared<capture::FileAuthorization>();
    return capture::makeCameraAuthorization(capture::systemPermissionEnvironment());
}

// Has so many pictures read at once, and others wait. Pictures come whether or not the last one has
// been read; two that are read at once take up to 60 MiB more, and no less time where all cores
// are at work on the first.
class RationedTextService final : public TextService {
public:
    RationedTextService(std::shared_ptr<TextService> service, unsigned atOnce)
        : service_(std::move(service)), free_(static_cast<std::ptrdiff_t>(atOnce)) {}

    TextResult perform(const Bitmap& bitmap, const TextRequest& request) override {
        const Turn turn(free_);
        return service_->perform(bitmap, request);
    }

private:
    struct Turn {
        explicit Turn(std::counting_semaphore<>& free) : semaphore(free) { semaphore.acquire(); }
        ~Turn() { semaphore.release(); }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        std::counting_semaphore<>& semaphore;
    };

    const std::shared_ptr<TextService> service_;
    std::counting_semaphore<> free_;
};

PlatformServices rationed(PlatformServices recognition) {
    constexpr unsigned kCoresForOne = 2;  // DefaultServicesOptions::textThreads
    const unsigned atOnce = std::max(1u, std::thread::hardware_concurrency() / kCoresForOne);
    if (recognition.text)
        recognition.text =
            std::make_shared<RationedTextService>(std::move(recognition.text), atOnce);
    return recognition;
}

std::shared_ptr<capture::GStreamerCapturePlatform> platformFor(const CameraOptions& options) {
    return std::make_shared<capture::GStreamerCapturePlatform>(
        options, capture::makeCameraRemote(capture::systemPermissionEnvironment()));
}

}  // namespace

std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label) {
    return std::make_shared<base::AsioQueue>(std::move(label), 1);
}

std::vector<CameraDescription> cameras(const CameraOptions& options) {
    return platformFor(options)->cameras();
}

CameraServices defaultCameraServices(std::shared_ptr<DispatchQueue> mainQueue,
                                     const CameraOptions& options, PlatformServices recognition) {
    return {.authorization = makeAuthorization(options),
            .capture = platformFor(options),
            .detector = PassportDetector::create(rationed(std::move(recognition)),
                                                 ValidationEffort::verdictOnly),
            .mainQueue = std::move(mainQueue),
            .makeSerialQueue = makeSerialQueue};
}

std::vector<ServiceStatus> diagnoseCamera(const CameraOptions& options) {
    std::vector<ServiceStatus> all = platformFor(options)->diagnose();
    if (!capture::cameraFile(options))
        all.push_back(capture::diagnosePermission(capture::systemPermissionEnvironment()));
    return all;
}

}  // namespace kestrelid
