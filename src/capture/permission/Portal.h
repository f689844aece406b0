#pragma once

#include "capture/GLibHandles.h"
#include "capture/permission/CameraPermission.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::capture {

// The desktop portal for cameras and the store that keeps its answers. Thread: one, whose default
// main context is iterated.
class Portal {
public:
    // Ends a call that is under way once cancelled, from any thread.
    Portal(PermissionEnvironment environment, GCancellable* cancellable);

    // Answers false to requests that wait, and closes the connection, which withdraws the question.
    ~Portal();
    Portal(const Portal&) = delete;
    Portal& operator=(const Portal&) = delete;

    // What the store says. Also notDetermined if it cannot be reached, as in Flatpak.
    [[nodiscard]] AuthorizationStatus storedStatus();

    // Empty if there is no portal.
    [[nodiscard]] std::optional<bool> hasCamera();

    // A connection to PipeWire that shows the cameras; closed if they were not granted.
    [[nodiscard]] base::OwnedDescriptor openRemote();

    // Calls completion exactly once.
    void requestAccess(std::function<void(bool granted)> completion);

private:
    struct Call {
        const char* service;
        const char* path;
        const char* interface;
        const char* method;
    };

    static void onResponse(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                           GVariant* parameters, gpointer self);
    static void onOwnerChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                               const gchar*, GVariant* parameters, gpointer self);
    static void onClosed(GDBusConnection*, gboolean, GError*, gpointer self);

    // Null if there is no bus.
    GDBusConnection* connection();
    void disconnect();
    // Null if it fails or if bus is null. Takes ownership of arguments.
    GLibHandle<GVariant> call(GDBusConnection* bus, const Call& what, GVariant* arguments,
                              std::chrono::milliseconds limit) const;
    void subscribeResponse(GDBusConnection* bus, const std::string& path);
    bool ask();
    void answer(bool granted);

    PermissionEnvironment environment_;
    GLibHandle<GCancellable> cancellable_;
    GLibHandle<GDBusConnection> connection_;
    std::vector<guint> subscriptions_;  // of the question that is open
    std::vector<std::function<void(bool granted)>> waiting_;
    int questions_ = 0;
};

}  // namespace kestrelid::capture
