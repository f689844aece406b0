#include "capture/permission/CameraPermission.h"
#include "capture/permission/DeviceNodes.h"
#include "capture/permission/PortalAuthorization.h"

#include <array>
#include <grp.h>
#include <sys/stat.h>

namespace kestrelid::capture {
namespace {

constexpr const char* kName = "camera permission";

// The group that may use a node. It is "video" if the node's own group is root's.
std::string groupOf(const std::filesystem::path& node) {
    struct stat status {};
    if (::stat(node.c_str(), &status) == 0 && status.st_gid != 0) {
        group entry{};
        group* found = nullptr;
        std::array<char, 4096> memory{};
        if (::getgrgid_r(status.st_gid, &entry, memory.data(), memory.size(), &found) == 0 && found)
            return found->gr_name;
    }
    return "video";
}

ServiceStatus diagnoseNodes(const std::filesystem::path& folder) {
    const NodeAccess access = tryDeviceNodes(folder);
    if (access.status() == AuthorizationStatus::denied) {
        const auto& node = access.refused.front();
        return {kName, false,
                node.string() + " may not be opened: add your user to the group " + groupOf(node) +
                    " (sudo usermod -aG " + groupOf(node) + " USER), then log in again"};
    }
    if (access.opened.empty())
        return {kName, true, "not needed, as there is no video device in " + folder.string()};
    return {kName, true, access.opened.front().string() + " may be opened"};
}

ServiceStatus diagnosePortal(const PermissionEnvironment& environment) {
    PortalAuthorization authorization(environment);
    switch (authorization.status()) {
    case AuthorizationStatus::authorized:
        return {kName, true, "granted"};
    case AuthorizationStatus::restricted:
    case AuthorizationStatus::denied:
        return {kName, false,
                "refused: allow the camera for this application in the desktop's settings, under "
                "privacy"};
    case AuthorizationStatus::notDetermined:
        break;
    }
    const auto hasCamera = authorization.hasCamera();
    if (!hasCamera)
        return {kName, false,
                "this sandbox reaches no camera portal: install xdg-desktop-portal and the "
                "desktop's part of it, or give the sandbox the cameras"};
    return {kName, true,
            *hasCamera ? "the desktop asks when the camera is first used"
                       : "the desktop would ask, but its portal finds no camera"};
}

}  // namespace

ServiceStatus diagnosePermission(const PermissionEnvironment& environment) {
    return environment.isSandboxed ? diagnosePortal(environment)
                                   : diagnoseNodes(environment.devices);
}

}  // namespace kestrelid::capture
