#include "tests/capture/permission/FakePortal.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <future>
#include <gio/gunixfdlist.h>
#include <thread>
#include <utility>

namespace kestrelid::test {
namespace {

constexpr const char* kBus = "org.freedesktop.DBus";

constexpr const char* kInterfaces = R"(<node>
  <interface name="org.freedesktop.portal.Camera">
    <method name="AccessCamera">
      <arg type="a{sv}" name="options" direction="in"/>
      <arg type="o" name="handle" direction="out"/>
    </method>
    <method name="OpenPipeWireRemote">
      <arg type="a{sv}" name="options" direction="in"/>
      <arg type="h" name="fd" direction="out"/>
    </method>
    <property name="IsCameraPresent" type="b" access="read"/>
  </interface>
  <interface name="org.freedesktop.impl.portal.PermissionStore">
    <method name="Lookup">
      <arg type="s" name="table" direction="in"/>
      <arg type="s" name="id" direction="in"/>
      <arg type="a{sas}" name="permissions" direction="out"/>
      <arg type="v" name="data" direction="out"/>
    </method>
  </interface>
</node>)";

capture::GLibHandle<GDBusConnection> connect(const std::string& address) {
    const auto flags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    capture::GLibHandle<GDBusConnection> connection(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
    g_assert(connection);
    return connection;
}

capture::GLibHandle<GVariant> callBus(GDBusConnection* connection, const char* method,
                                      GVariant* arguments) {
    capture::GLibHandle<GVariant> reply(g_dbus_connection_call_sync(
        connection, kBus, "/org/freedesktop/DBus", kBus, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    g_assert(reply);
    return reply;
}

// The bus sees a moment later that a former portal has gone.
void ownName(GDBusConnection* connection, const char* name) {
    constexpr guint32 kDoNotQueue = 4;
    constexpr guint32 kOwner = 1;
    guint32 result = 0;
    for (int attempt = 0; result != kOwner && attempt < 6000; ++attempt) {
        if (attempt > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        const auto reply =
            callBus(connection, "RequestName", g_variant_new("(su)", name, kDoNotQueue));
        g_variant_get(reply.get(), "(u)", &result);
    }
    g_assert(result == kOwner);
}

}  // namespace

PrivateBus::PrivateBus() : bus_(g_test_dbus_new(G_TEST_DBUS_NONE)) {
    g_test_dbus_up(bus_);
}

PrivateBus::~PrivateBus() {
    g_test_dbus_stop(bus_);
    g_object_unref(bus_);
}

std::string PrivateBus::address() const {
    return g_test_dbus_get_bus_address(bus_);
}

void PrivateBus::kill() const {
    const auto connection = connect(address());
    const capture::GLibHandle<GVariant> reply(
        callBus(connection.get(), "GetConnectionUnixProcessID", g_variant_new("(s)", kBus)));
    guint32 process = 0;
    g_variant_get(reply.get(), "(u)", &process);
    ::kill(pid_t(process), SIGKILL);
}

FakePortal::FakePortal(const std::string& address, PortalBehaviour behaviour)
    : address_(address), behaviour_(std::move(behaviour)) {
    onThread([this] { serve(); });
}

FakePortal::~FakePortal() {
    onThread([this] {
        for (GDBusMethodInvocation* invocation : std::exchange(unreplied_, {}))
            g_object_unref(invocation);
        g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
        connection_.reset();
    });
}

void FakePortal::respond(std::uint32_t response) {
    onThread([this, response] { emit(response); });
}

bool FakePortal::waitForQuestions(int count) const {
    for (int attempt = 0; attempt < 12000 && questions_ < count; ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return questions_ >= count;
}

bool FakePortal::hasQuestioner() {
    gboolean isThere = FALSE;
    onThread([&] {
        const auto reply =
            callBus(connection_.get(), "NameHasOwner", g_variant_new("(s)", questioner_.c_str()));
        g_variant_get(reply.get(), "(b)", &isThere);
    });
    return isThere != FALSE;
}

bool FakePortal::waitUntilQuestionerLeaves() {
    for (int look = 0; hasQuestioner(); ++look) {
        if (look == 6000)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

void FakePortal::serve() {
    connection_ = connect(address_);
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(kInterfaces, nullptr);
    const GDBusInterfaceVTable table{
        [](auto*, auto*, auto*, auto*, const gchar* method, auto*, auto* invocation,
           gpointer self) {
            const auto answer = std::string_view(method) == "Lookup" ? &FakePortal::lookup
                                : std::string_view(method) == "OpenPipeWireRemote"
                                    ? &FakePortal::openRemote
                                    : &FakePortal::accessCamera;
            (static_cast<FakePortal*>(self)->*answer)(invocation);
        },
        [](auto*, auto*, auto*, auto*, auto*, auto*, gpointer self) {
            return g_variant_new_boolean(static_cast<FakePortal*>(self)->behaviour_.hasCamera);
        },
        nullptr,
        {}};
    const char* const paths[] = {"/org/freedesktop/portal/desktop",
                                 "/org/freedesktop/impl/portal/PermissionStore"};
    for (unsigned interface = 0; interface < 2; ++interface)
        g_dbus_connection_register_object(connection_.get(), paths[interface],
                                          node->interfaces[interface], &table, this, nullptr,
                                          nullptr);
    g_dbus_node_info_unref(node);
    ownName(connection_.get(), "org.freedesktop.portal.Desktop");
    if (behaviour_.hasStore)
        ownName(connection_.get(), "org.freedesktop.impl.portal.PermissionStore");
}

void FakePortal::lookup(GDBusMethodInvocation* invocation) {
    const gchar* table = nullptr;
    const gchar* id = nullptr;
    g_variant_get(g_dbus_method_invocation_get_parameters(invocation), "(&s&s)", &table, &id);
    if (!behaviour_.stored || std::string(table) != "devices" || std::string(id) != "camera") {
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.portal.Error.NotFound", "No entry");
        return;
    }
    const gchar* const answers[] = {behaviour_.stored->c_str(), nullptr};
    GVariantBuilder permissions;
    g_variant_builder_init(&permissions, G_VARIANT_TYPE("a{sas}"));
    g_variant_builder_add(&permissions, "{s^as}", behaviour_.application.c_str(), answers);
    g_dbus_method_invocation_return_value(
        invocation, g_variant_new("(a{sas}v)", &permissions, g_variant_new_byte(0)));
}

void FakePortal::openRemote(GDBusMethodInvocation* invocation) {
    const base::OwnedDescriptor remote =
        behaviour_.openRemote ? behaviour_.openRemote() : base::OwnedDescriptor();
    if (!remote.isOpen()) {
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.portal.Error.NotAllowed", "Permission denied");
        return;
    }
    const capture::GLibHandle<GUnixFDList> files(g_unix_fd_list_new());
    const gint index = g_unix_fd_list_append(files.get(), remote.number(), nullptr);
    g_dbus_method_invocation_return_value_with_unix_fd_list(invocation, g_variant_new("(h)", index),
                                                            files.get());
}

void FakePortal::accessCamera(GDBusMethodInvocation* invocation) {
    using Reply = PortalBehaviour::Reply;
    const capture::GLibHandle<GVariant> options(
        g_variant_get_child_value(g_dbus_method_invocation_get_parameters(invocation), 0));
    const gchar* token = "";
    g_variant_lookup(options.get(), "handle_token", "&s", &token);
    questioner_ = g_dbus_method_invocation_get_sender(invocation);
    std::string sender = questioner_.substr(1);
    std::replace(sender.begin(), sender.end(), '.', '_');
    handle_ = "/org/freedesktop/portal/desktop/request/" + sender + '/' +
              (behaviour_.reply == Reply::otherHandle ? "t1" : token);

    if (behaviour_.reply == Reply::responseFirst)
        emit(behaviour_.response.value_or(2));
    if (behaviour_.reply == Reply::none)
        unreplied_.push_back(invocation);
    else if (behaviour_.reply == Reply::error)
        g_dbus_method_invocation_return_dbus_error(
            invocation, "org.freedesktop.portal.Error.NotAllowed", "Cameras are off");
    else
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", handle_.c_str()));
    if (behaviour_.reply == Reply::predictedHandle && behaviour_.response)
        emit(*behaviour_.response);
    ++questions_;
}

void FakePortal::emit(std::uint32_t response) {
    GVariantBuilder results;
    g_variant_builder_init(&results, G_VARIANT_TYPE_VARDICT);
    g_dbus_connection_emit_signal(connection_.get(), questioner_.c_str(), handle_.c_str(),
                                  "org.freedesktop.portal.Request", "Response",
                                  g_variant_new("(ua{sv})", response, &results), nullptr);
}

void FakePortal::onThread(const std::function<void()>& task) {
    std::promise<void> done;
    thread_.post([&] {
        task();
        done.set_value();
    });
    done.get_future().wait();
}

}  // namespace kestrelid::test
