#pragma once

#include "capture/CameraRemote.h"

#include <kestrelid/CaptureServices.h>
#include <kestrelid/ServiceStatus.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace kestrelid::capture {

// Where permission is looked for.
struct PermissionEnvironment {
    // Inside a sandbox the desktop decides, through its portal; outside one the device nodes do.
    bool isSandboxed = false;

    // The name by which the desktop's permission store knows this program. Used inside a sandbox.
    std::string applicationId = {};

    // Folder of the nodes video*.
    std::filesystem::path devices = "/dev";

    // D-Bus address; empty: the session bus.
    std::string busAddress = {};

    // For the call that puts the question. The person's answer is waited for without limit.
    std::chrono::milliseconds callLimit{10'000};

    // For one call that asks nobody.
    std::chrono::milliseconds queryLimit{500};

    // For all calls that an answer takes; a bus that hangs must not hold the caller for longer.
    std::chrono::milliseconds statusLimit{1'000};
};

// A sandbox is Flatpak (/.flatpak-info) or Snap (SNAP in the environment).
[[nodiscard]] PermissionEnvironment systemPermissionEnvironment();

// Outside a sandbox requestAccess() answers with the status. Inside one, requests that wait at the
// same time share one question. The answer is false if the person refuses or closes the question,
// if there is no portal, if it goes away, or if the object is released before the answer has come.
[[nodiscard]] std::shared_ptr<CameraAuthorization>
makeCameraAuthorization(const PermissionEnvironment& environment);

// Opens the connection that a sandbox's portal gives to programs that were granted the camera;
// outside a sandbox the socket that PipeWire listens at now.
[[nodiscard]] OpenCameraRemote makeCameraRemote(const PermissionEnvironment& environment);

// For a file that stands for a camera.
class FileAuthorization final : public CameraAuthorization {
public:
    [[nodiscard]] AuthorizationStatus status() override;
    void requestAccess(std::function<void(bool granted)> completion) override;
};

// Its details tell a person what to do. Takes up to a second.
[[nodiscard]] ServiceStatus diagnosePermission(const PermissionEnvironment& environment);

}  // namespace kestrelid::capture
