#include "capture/permission/PortalAuthorization.h"

#include "capture/permission/DeviceNodes.h"

#include <future>
#include <utility>

namespace kestrelid::capture {
namespace {

// What ask returns on the thread, or `otherwise` if it takes longer than the limit or fails.
template <class T, class Ask>
T askOn(ContextThread& thread, std::chrono::milliseconds limit, Ask ask, T otherwise) {
    if (thread.isCurrent())
        return ask();
    try {
        auto answer = std::make_shared<std::promise<T>>();
        auto future = answer->get_future();
        thread.post(
            [answer = std::move(answer), ask = std::move(ask)] { answer->set_value(ask()); });
        if (future.wait_for(limit) == std::future_status::ready)
            return future.get();
    } catch (const std::exception&) {
        // Memory is short, here or there.
    }
    return otherwise;
}

}  // namespace

struct PortalAuthorization::State {
    std::filesystem::path devices;
    std::chrono::milliseconds limit;
    GLibHandle<GCancellable> cancellable{g_cancellable_new()};
    std::unique_ptr<Portal> portal;  // on the thread only
    bool wasGranted = false;         // on the thread only

    AuthorizationStatus status() {
        const auto stored = portal->storedStatus();
        if (stored != AuthorizationStatus::notDetermined)
            return stored;
        return wasGranted || !tryDeviceNodes(devices).opened.empty()
                   ? AuthorizationStatus::authorized
                   : AuthorizationStatus::notDetermined;
    }
};

PortalAuthorization::PortalAuthorization(const PermissionEnvironment& environment)
    : state_(std::make_shared<State>()) {
    state_->devices = environment.devices;
    state_->limit = environment.statusLimit;
    state_->portal = std::make_unique<Portal>(environment, state_->cancellable.get());
}

PortalAuthorization::~PortalAuthorization() {
    g_cancellable_cancel(state_->cancellable.get());
    thread_.post([state = std::move(state_)] { state->portal.reset(); });
}

AuthorizationStatus PortalAuthorization::status() {
    return askOn(
        thread_, state_->limit, [state = state_] { return state->status(); },
        AuthorizationStatus::notDetermined);
}

void PortalAuthorization::requestAccess(std::function<void(bool granted)> completion) {
    thread_.post([state = state_, completion = std::move(completion)]() mutable {
        const auto status = state->status();
        if (status != AuthorizationStatus::notDetermined)
            return completion(status == AuthorizationStatus::authorized);
        state->portal->requestAccess(
            [state = state.get(), completion = std::move(completion)](bool granted) {
                state->wasGranted = state->wasGranted || granted;
                completion(granted);
            });
    });
}

std::optional<bool> PortalAuthorization::hasCamera() {
    return askOn<std::optional<bool>>(
        thread_, state_->limit, [state = state_] { return state->portal->hasCamera(); },
        std::nullopt);
}

base::OwnedDescriptor PortalAuthorization::openRemote() {
    return askOn(
        thread_, state_->limit, [state = state_] { return state->portal->openRemote(); },
        base::OwnedDescriptor());
}

}  // namespace kestrelid::capture
