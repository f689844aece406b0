#include <kestrelid/DefaultCamera.h>

#include "base/AsioQueue.h"
#include "capture/CameraFile.h"
#include "capture/gstreamer/GStreamerCapturePlatform.h"
#include "capture/permission/CameraPermission.h"
#include "vision/text/RationedTextService.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace kestrelid {

namespace {

std::shared_ptr<CameraAuthorization> makeAuthorization(const CameraOptions& options) {
    if (capture::cameraFile(options))
        return std::make_shared<capture::FileAuthorization>();
    return capture::makeCameraAuthorization(capture::systemPermissionEnvironment());
}

PlatformServices rationed(PlatformServices recognition) {
    constexpr unsigned kCoresForOne = 2;  // DefaultServicesOptions::textThreads
    const unsigned atOnce = std::max(1u, std::thread::hardware_concurrency() / kCoresForOne);
    if (recognition.text)
        recognition.text =
            std::make_shared<vision::RationedTextService>(std::move(recognition.text), atOnce);
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
                                     const CameraOptions& options,
                                     PlatformServices recognition) try {
    return {.authorization = makeAuthorization(options),
            .capture = platformFor(options),
            .detector = PassportDetector::create(rationed(std::move(recognition)),
                                                 ValidationEffort::verdictOnly),
            .mainQueue = std::move(mainQueue),
            .makeSerialQueue = makeSerialQueue};
} catch (const std::exception&) {
    return {};  // no memory or thread for them
}

std::vector<ServiceStatus> diagnoseCamera(const CameraOptions& options) {
    std::vector<ServiceStatus> all = platformFor(options)->diagnose();
    if (!capture::cameraFile(options))
        all.push_back(capture::diagnosePermission(capture::systemPermissionEnvironment()));
    return all;
}

}  // namespace kestrelid
