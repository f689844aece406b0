#include <kestrelid/CameraManager.h>

#include "camera/Submit.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>
#include <variant>

// Which cameras there are, and which one the session has.
namespace kestrelid {

namespace {

using camera::submit;

// As they are now, and after them those that are known from before.
std::vector<CameraDescription> withThoseUnplugged(std::vector<CameraDescription> present,
                                                  const std::vector<CameraDescription>& known) {
    std::vector<CameraDescription> all = std::move(present);
    const auto now = static_cast<std::ptrdiff_t>(all.size());
    for (const CameraDescription& camera : known) {
        if (std::any_of(all.begin(), all.begin() + now,
                        [&](const auto& one) { return one.name == camera.name; }))
            continue;
        all.push_back(camera);
        all.back().isPresent = false;
    }
    return all;
}

}  // namespace

// Asked for after the session was set up, so that the camera does not wait for it.
void CameraManager::followCameras() {
    if (!cameraList_)
        cameraList_ = services_.capture->observeCameras(
            [weak = weak_from_this(), sessionQueue = sessionQueue_, awaited = camerasAwaited_] {
                if (awaited->exchange(true))
                    return;  // plugging one in tells several times
                const bool taken = submit(*sessionQueue, [weak, awaited] {
                    awaited->store(false);
                    if (const auto self = weak.lock())
                        self->lookForCameras();
                });
                if (!taken)
                    awaited->store(false);
            });
    lookForCameras();
}

void CameraManager::lookForCameras() {
    auto all = withThoseUnplugged(services_.capture->cameras(), knownCameras_);
    if (all == knownCameras_)
        return;
    knownCameras_ = std::move(all);
    submit(*services_.mainQueue,
           [self = shared_from_this(), all = knownCameras_] { self->cameras_.publish(all); });
}

void CameraManager::publishCurrentLater(std::string name) {
    submit(*services_.mainQueue, [self = shared_from_this(), name = std::move(name)] {
        if (name != self->currentCamera_.value())
            self->currentCamera_.publish(name);
    });
}

std::shared_ptr<CaptureDevice> CameraManager::chosenDevice() {
    if (!chosenCamera_.empty()) {
        if (auto device = services_.capture->videoDevice(chosenCamera_))
            return device;
        chosenCamera_.clear();  // back again it would be refused, as another one runs by then
    }
    return services_.capture->defaultVideoDevice();
}

void CameraManager::switchCamera(const std::string& name) try {
    submit(*sessionQueue_, [self = shared_from_this(), name] { self->switchTo(name); });
} catch (const std::exception&) {
    // No memory for the name: the present camera stays.
}

void CameraManager::switchTo(const std::string& name) {
    if (!wasSetUp_) {
        chosenCamera_ = name;
        return;
    }
    const std::shared_ptr<CaptureDevice> device = services_.capture->videoDevice(name);
    if (!device)
        return;
    if (!hasInput_) {
        chosenCamera_ = name;
        return configureSession();
    }
    const auto opened = services_.capture->makeInput(device);
    if (const auto* error = std::get_if<CaptureError>(&opened))
        return publishWithoutSessionLater(CameraState::failed, error->description);
    if (session_->replaceInput(std::get<std::shared_ptr<CaptureInput>>(opened))) {
        chosenCamera_ = name;
        publishCurrentLater(device->name());
        publishStartLater();
        checkReadinessLater(false);
    } else if (!session_->isRunning()) {
        chosenCamera_ = name;
    }
}

}  // namespace kestrelid
