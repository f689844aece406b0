#include "capture/permission/Portal.h"

#include "base/ExitGate.h"

#include <algorithm>
#include <cstring>
#include <gio/gunixfdlist.h>
#include <utility>

namespace kestrelid::capture {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kCamera = "org.freedesktop.portal.Camera";
constexpr const char* kStore = "org.freedesktop.impl.portal.PermissionStore";
constexpr const char* kStorePath = "/org/freedesktop/impl/portal/PermissionStore";

// The first of the answers that the store keeps for an application.
AuthorizationStatus statusIn(GVariant* permissions, const std::string& application) {
    const GLibHandle<GVariant> answers(
        g_variant_lookup_value(permissions, application.c_str(), G_VARIANT_TYPE_STRING_ARRAY));
    if (!answers || g_variant_n_children(answers.get()) == 0)
        return AuthorizationStatus::notDetermined;
    const gchar* answer = nullptr;
    g_variant_get_child(answers.get(), 0, "&s", &answer);
    if (std::strcmp(answer, "yes") == 0)
        return AuthorizationStatus::authorized;
    if (std::strcmp(answer, "no") == 0)
        return AuthorizationStatus::denied;
    return AuthorizationStatus::notDetermined;
}

// The object that will answer, as the portal derives it from the caller's name and the token.
std::string requestPath(GDBusConnection* connection, const std::string& token) {
    std::string sender = g_dbus_connection_get_unique_name(connection);
    sender.erase(0, 1);
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/request/" + sender + '/' + token;
}

}  // namespace

Portal::Portal(PermissionEnvironment environment, GCancellable* cancellable)
    : environment_(std::move(environment)),
      cancellable_(static_cast<GCancellable*>(g_object_ref(cancellable))) {}

Portal::~Portal() {
    answer(false);
    disconnect();
}

AuthorizationStatus Portal::storedStatus() {
    if (environment_.applicationId.empty())
        return AuthorizationStatus::notDetermined;  // "" is the entry of unsandboxed programs
    const Call lookup{kStore, kStorePath, kStore, "Lookup"};
    const auto reply = call(connection(), lookup, g_variant_new("(ss)", "devices", "camera"),
                            environment_.queryLimit);
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a{sas}v)")))
        return AuthorizationStatus::notDetermined;
    const GLibHandle<GVariant> permissions(g_variant_get_child_value(reply.get(), 0));
    return statusIn(permissions.get(), environment_.applicationId);
}

std::optional<bool> Portal::hasCamera() {
    const Call get{kPortal, kPortalPath, "org.freedesktop.DBus.Properties", "Get"};
    const auto reply = call(connection(), get, g_variant_new("(ss)", kCamera, "IsCameraPresent"),
                            environment_.queryLimit);
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(v)")))
        return std::nullopt;
    GVariant* inner = nullptr;
    g_variant_get(reply.get(), "(v)", &inner);
    const GLibHandle<GVariant> value(inner);
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN))
        return std::nullopt;
    return g_variant_get_boolean(value.get()) != FALSE;
}

base::OwnedDescriptor Portal::openRemote() {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    const GLibHandle<GVariant> arguments(g_variant_ref_sink(g_variant_new("(a{sv})", &options)));
    GDBusConnection* bus = connection();
    if (!bus)
        return {};
    GUnixFDList* attached = nullptr;
    const GLibHandle<GVariant> reply(g_dbus_connection_call_with_unix_fd_list_sync(
        bus, kPortal, kPortalPath, kCamera, "OpenPipeWireRemote", arguments.get(),
        G_VARIANT_TYPE("(h)"), G_DBUS_CALL_FLAGS_NONE,
        static_cast<int>(environment_.queryLimit.count()), nullptr, &attached, cancellable_.get(),
        nullptr));
    const GLibHandle<GUnixFDList> files(attached);
    if (!reply || !files)
        return {};
    gint32 index = 0;
    g_variant_get(reply.get(), "(h)", &index);
    if (index < 0 || index >= g_unix_fd_list_get_length(files.get()))
        return {};
    return base::OwnedDescriptor(g_unix_fd_list_get(files.get(), index, nullptr));  // a duplicate
}

void Portal::requestAccess(std::function<void(bool granted)> completion) {
    waiting_.push_back(std::move(completion));
    if (waiting_.size() == 1 && !ask())
        answer(false);
}

// Subscribes first, because the answer may come before the call returns.
bool Portal::ask() {
    GDBusConnection* bus = connection();
    if (!bus)
        return false;
    const std::string token = "kestrelid" + std::to_string(++questions_);
    const std::string predicted = requestPath(bus, token);
    subscribeResponse(bus, predicted);
    subscriptions_.push_back(g_dbus_connection_signal_subscribe(
        bus, "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
        "/org/freedesktop/DBus", kPortal, G_DBUS_SIGNAL_FLAGS_NONE, onOwnerChanged, this, nullptr));

    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
    const Call access{kPortal, kPortalPath, kCamera, "AccessCamera"};
    const auto reply =
        call(bus, access, g_variant_new("(a{sv})", &options), environment_.callLimit);
    if (!reply || !g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(o)")))
        return false;
    const gchar* path = nullptr;
    g_variant_get(reply.get(), "(&o)", &path);
    if (path != predicted)
        subscribeResponse(bus, path);  // portals before version 0.9 choose it themselves
    return true;
}

void Portal::subscribeResponse(GDBusConnection* bus, const std::string& path) {
    subscriptions_.push_back(g_dbus_connection_signal_subscribe(
        bus, kPortal, "org.freedesktop.portal.Request", "Response", path.c_str(), nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, onResponse, this, nullptr));
}

void Portal::onResponse(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                        GVariant* parameters, gpointer self) {
    guint32 response = 2;  // 0: granted, 1: refused, 2: ended in another way
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ua{sv})")))
        g_variant_get_child(parameters, 0, "u", &response);
    static_cast<Portal*>(self)->answer(response == 0);
}

// A portal that went away answers no more.
void Portal::onOwnerChanged(GDBusConnection*, const gchar*, const gchar*, const gchar*,
                            const gchar*, GVariant* parameters, gpointer self) {
    const gchar* formerOwner = "";
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")))
        g_variant_get_child(parameters, 1, "&s", &formerOwner);
    if (*formerOwner != '\0')
        static_cast<Portal*>(self)->answer(false);
}

void Portal::onClosed(GDBusConnection*, gboolean, GError*, gpointer self) {
    static_cast<Portal*>(self)->answer(false);
}

void Portal::answer(bool granted) {
    for (const guint subscription : std::exchange(subscriptions_, {}))
        g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
    for (const auto& completion : std::exchange(waiting_, {}))
        completion(granted);
}

GDBusConnection* Portal::connection() {
    if (connection_ && !g_dbus_connection_is_closed(connection_.get()))
        return connection_.get();
    answer(false);  // for requests that waited on the lost connection
    disconnect();
    const base::ExitGate::Pass pass;  // the first connection of a process loads modules
    if (!pass)
        return nullptr;
    TextHandle address(
        environment_.busAddress.empty()
            ? g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, cancellable_.get(), nullptr)
            : g_strdup(environment_.busAddress.c_str()));
    if (!address)
        return nullptr;
    const auto flags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    connection_.reset(g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr,
                                                             cancellable_.get(), nullptr));
    if (connection_)
        g_signal_connect(connection_.get(), "closed", G_CALLBACK(onClosed), this);
    return connection_.get();
}

void Portal::disconnect() {
    if (!connection_)
        return;
    g_signal_handlers_disconnect_by_data(connection_.get(), this);
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    connection_.reset();
}

GLibHandle<GVariant> Portal::call(GDBusConnection* bus, const Call& what, GVariant* arguments,
                                  std::chrono::milliseconds limit) const {
    const GLibHandle<GVariant> owned(g_variant_ref_sink(arguments));
    if (!bus)
        return nullptr;
    return GLibHandle<GVariant>(g_dbus_connection_call_sync(
        bus, what.service, what.path, what.interface, what.method, owned.get(), nullptr,
        G_DBUS_CALL_FLAGS_NONE, static_cast<int>(limit.count()), cancellable_.get(), nullptr));
}

}  // namespace kestrelid::capture
