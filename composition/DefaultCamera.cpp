#include <kestrelid/DefaultCamera.h>

#include "platform/capture/CameraFile.h"
#include "platform/capture/gstreamer/GStreamerCapturePlatform.h"
#include "platform/capture/permission/CameraPermission.h"
#include "platform/dispatch/AsioQueue.h"

#include <utility>

namespace kestrelid {

namespace {

std::shared_ptr<CameraAuthorization> makeAuthorization(const CameraOptions& options) {
    if (cameraFile(options))
        return std::make_shared<FileAuthorization>();
    return makeCameraAuthorization(systemPermissionEnvironment());
}

}  // namespace

std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label) {
    return std::make_shared<AsioQueue>(std::move(label), 1);
}

std::vector<CameraDescription> cameras(const CameraOptions& options) {
    return GStreamerCapturePlatform(options).cameras();
}

CameraServices defaultCameraServices(std::shared_ptr<DispatchQueue> mainQueue,
                                     const CameraOptions& options, PlatformServices recognition) {
    return {.authorization = makeAuthorization(options),
            .capture = std::make_shared<GStreamerCapturePlatform>(options),
            .detector =
                PassportDetector::create(std::move(recognition), ValidationEffort::verdictOnly),
            .mainQueue = std::move(mainQueue),
            .makeSerialQueue = makeSerialQueue};
}

std::vector<ServiceStatus> diagnoseCamera(const CameraOptions& options) {
    std::vector<ServiceStatus> all = GStreamerCapturePlatform(options).diagnose();
    if (!cameraFile(options))
        all.push_back(diagnosePermission(systemPermissionEnvironment()));
    return all;
}

}  // namespace kestrelid
