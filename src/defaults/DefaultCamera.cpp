#include <kestrelid/DefaultCamera.h>

#include "base/AsioQueue.h"
#include "capture/CameraFile.h"
#include "capture/gstreamer/GStreamerCapturePlatform.h"
#include "capture/permission/CameraPermission.h"
#include "defaults/CameraDetector.h"
#include "vision/text/NetworkTextService.h"

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

std::shared_ptr<defaults::CameraDetector> makeDetector(PlatformServices recognition) {
    constexpr unsigned kCoresForOne = 2;  // DefaultServicesOptions::textThreads
    const unsigned atOnce = std::max(1u, std::thread::hardware_concurrency() / kCoresForOne);
    defaults::CameraDetector::PagesUnderWay pagesUnderWay;
    if (auto text = std::dynamic_pointer_cast<vision::NetworkTextService>(recognition.text))
        pagesUnderWay = [text = std::move(text)] { return text->pagesUnderWay(); };
    return defaults::CameraDetector::create(std::move(recognition), static_cast<int>(atOnce),
                                            std::move(pagesUnderWay));
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
    const auto detector = makeDetector(std::move(recognition));
    std::function<bool()> canJudge;
    if (detector)
        canJudge = [detector] { return detector->canJudge(); };
    return {.authorization = makeAuthorization(options),
            .capture = platformFor(options),
            .detector = detector,
            .mainQueue = std::move(mainQueue),
            .makeSerialQueue = makeSerialQueue,
            .canJudge = std::move(canJudge)};
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
