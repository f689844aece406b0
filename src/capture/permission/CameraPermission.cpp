#include "capture/permission/CameraPermission.h"

#include "base/AsioQueue.h"
#include "capture/permission/DeviceNodes.h"
#include "capture/permission/PortalAuthorization.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <utility>

namespace kestrelid::capture {
namespace {

constexpr const char* kFlatpakInfo = "/.flatpak-info";

void answerLater(const std::function<void(bool granted)>& completion, bool granted) {
    try {
        const auto queue = std::make_shared<base::AsioQueue>("camera.access", 1);
        queue->async([queue, completion, granted] { completion(granted); });
    } catch (const std::exception&) {
        completion(granted);  // no thread or memory for later
    }
}

class NodeAuthorization final : public CameraAuthorization {
public:
    explicit NodeAuthorization(std::filesystem::path devices) : devices_(std::move(devices)) {}

    AuthorizationStatus status() override { return tryDeviceNodes(devices_).status(); }

    void requestAccess(std::function<void(bool granted)> completion) override {
        answerLater(completion, status() == AuthorizationStatus::authorized);
    }

private:
    std::filesystem::path devices_;
};

// The value of `name` in the group [Application].
std::string flatpakApplication() {
    std::ifstream file(kFlatpakInfo);
    bool isApplication = false;
    for (std::string line; std::getline(file, line);) {
        constexpr std::string_view kName = "name=";
        if (line.starts_with('['))
            isApplication = line == "[Application]";
        else if (isApplication && line.starts_with(kName))
            return line.substr(kName.size());
    }
    return {};
}

// Where PipeWire's own library looks for the socket.
std::filesystem::path pipeWireSocket() {
    const char* name = std::getenv("PIPEWIRE_REMOTE");
    const std::filesystem::path socket = name ? name : "pipewire-0";
    for (const char* folder : {"PIPEWIRE_RUNTIME_DIR", "XDG_RUNTIME_DIR"}) {
        if (const char* path = std::getenv(folder))
            return path / socket;  // socket alone if it is absolute
    }
    return socket.is_absolute() ? socket : std::filesystem::path();
}

base::OwnedDescriptor connectToPipeWire() {
    const std::string path = pipeWireSocket();
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return {};
    std::ranges::copy(path, address.sun_path);
    base::OwnedDescriptor connection(
        ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!connection.isOpen() ||
        ::connect(connection.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return {};
    return connection;
}

}  // namespace

AuthorizationStatus FileAuthorization::status() {
    return AuthorizationStatus::authorized;
}

void FileAuthorization::requestAccess(std::function<void(bool granted)> completion) {
    answerLater(completion, true);
}

PermissionEnvironment systemPermissionEnvironment() {
    PermissionEnvironment environment;
    std::error_code ignored;
    if (std::filesystem::exists(kFlatpakInfo, ignored)) {
        environment.isSandboxed = true;
        environment.applicationId = flatpakApplication();
    } else if (std::getenv("SNAP")) {
        environment.isSandboxed = true;
        // Portals put "snap." before the name of the instance.
        if (const char* name = std::getenv("SNAP_INSTANCE_NAME"))
            environment.applicationId = std::string("snap.") + name;
    }
    return environment;
}

std::shared_ptr<CameraAuthorization>
makeCameraAuthorization(const PermissionEnvironment& environment) {
    if (environment.isSandboxed)
        return std::make_shared<PortalAuthorization>(environment);
    return std::make_shared<NodeAuthorization>(environment.devices);
}

OpenCameraRemote makeCameraRemote(const PermissionEnvironment& environment) {
    if (!environment.isSandboxed)
        return connectToPipeWire;
    // A bus connection of its own will do: the portal knows a program by its sandbox.
    return [environment] { return PortalAuthorization(environment).openRemote(); };
}

}  // namespace kestrelid::capture
