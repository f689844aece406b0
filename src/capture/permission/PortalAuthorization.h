#pragma once

#include "capture/permission/CameraPermission.h"
#include "capture/permission/ContextThread.h"
#include "capture/permission/Portal.h"

#include <atomic>

namespace kestrelid::capture {

// Permission inside a sandbox. The store's answer counts first; then a device node that opens,
// because the sandbox was given the cameras; then what the person granted while this object lives.
class PortalAuthorization final : public CameraAuthorization {
public:
    explicit PortalAuthorization(const PermissionEnvironment& environment);
    ~PortalAuthorization() override;

    [[nodiscard]] AuthorizationStatus status() override;
    void requestAccess(std::function<void(bool granted)> completion) override;

    // Empty if there is no portal.
    [[nodiscard]] std::optional<bool> hasCamera();

    // Closed if it is not granted.
    [[nodiscard]] base::OwnedDescriptor openRemote();

private:
    struct State;

    std::shared_ptr<State> state_;  // shared with tasks of the thread
    ContextThread thread_;
};

}  // namespace kestrelid::capture
