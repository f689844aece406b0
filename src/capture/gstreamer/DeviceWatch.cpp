#include "capture/gstreamer/DeviceWatch.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <system_error>
#include <thread>
#include <utility>

namespace kestrelid::capture {

struct DeviceWatch::Removals {
    struct Watched {
        GstDevice* device;  // held by the watcher
        std::function<void()> removed;
    };

    std::mutex mutex;
    std::vector<std::shared_ptr<const Watched>> watched;
};

namespace {

constexpr const char* kPipeWire = "pipewiredeviceprovider";

// PipeWire's plugin (0.3.65) damages the heap when a provider stops: it takes a proxy away under
// the thread that still uses it, and leaves its listeners on a connection that others may share. So
// a provider that has started stays until the process ends, and with it one thread and one
// connection.

// The program's own provider counts its starts: one more than there are stops.
void keepPipeWire() {
    GstDeviceProvider* shared = gst_device_provider_factory_get_by_name(kPipeWire);
    const ProviderHandle owner(shared);
    if (shared)
        gst_device_provider_start(shared);
}

// Whether the other side has closed the connection.
bool isCutOff(const base::OwnedDescriptor& connection) {
    pollfd end{.fd = connection.number(), .events = POLLRDHUP, .revents = 0};
    return ::poll(&end, 1, 0) == 1;
}

}  // namespace

std::shared_ptr<DeviceWatch> DeviceWatch::start() {
    MonitorHandle monitor = adopt(gst_device_monitor_new());
    gst_device_monitor_add_filter(monitor.get(), "Video/Source", nullptr);
    std::shared_ptr<DeviceWatch> watch(new DeviceWatch(std::move(monitor), nullptr, {}));
    if (!gst_device_monitor_start(watch->monitor_.get()))
        return nullptr;
    keepPipeWire();
    return watch;
}

std::shared_ptr<DeviceWatch> DeviceWatch::ofRemote(const OpenCameraRemote& open) {
    constexpr std::size_t kMost = 16;
    constexpr std::chrono::seconds kPatience{1};
    static std::mutex mutex;
    static auto& kept = *new std::vector<std::shared_ptr<DeviceWatch>>;  // never destroyed
    const std::lock_guard lock(mutex);
    if (kept.empty() || (isCutOff(kept.back()->remote_) && kept.size() < kMost)) {
        auto watch = make(open());
        if (!watch)
            return nullptr;
        kept.push_back(std::move(watch));
        kept.back()->startAside();
    }
    const std::shared_ptr<DeviceWatch> latest = kept.back();
    const bool answers = latest->hasStarted_.wait_for(kPatience) == std::future_status::ready;
    return answers && !isCutOff(latest->remote_) ? latest : nullptr;
}

std::shared_ptr<DeviceWatch> DeviceWatch::make(base::OwnedDescriptor remote) {
    constexpr const char* kFile = "fd";
    const FactoryHandle factory(gst_device_provider_factory_find(kPipeWire));
    if (!remote.isOpen() || isCutOff(remote) || !factory)
        return nullptr;
    const FactoryHandle loaded(
        GST_DEVICE_PROVIDER_FACTORY(gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory.get()))));
    if (!loaded)
        return nullptr;
    // Not the provider that the factory shares with the whole program.
    const GType type = gst_device_provider_factory_get_device_provider_type(loaded.get());
    ProviderHandle provider = adopt(GST_DEVICE_PROVIDER(g_object_new(type, nullptr)));
    if (!g_object_class_find_property(G_OBJECT_GET_CLASS(provider.get()), kFile))
        return nullptr;
    g_object_set(provider.get(), kFile, remote.number(), nullptr);
    return std::shared_ptr<DeviceWatch>(
        new DeviceWatch(nullptr, std::move(provider), std::move(remote)));
}

// The plugin waits without end for a PipeWire that does not answer.
void DeviceWatch::startAside() {
    try {
        std::thread([this] {
            gst_device_provider_start(provider_.get());
            started_.set_value();
        }).detach();
    } catch (const std::system_error&) {
        // The machine has no thread left: a watch without devices.
    }
}

DeviceWatch::DeviceWatch(MonitorHandle monitor, ProviderHandle provider,
                         base::OwnedDescriptor remote)
    : remote_(std::move(remote)), monitor_(std::move(monitor)), provider_(std::move(provider)),
      removals_(std::make_shared<Removals>()) {
    gst_bus_set_sync_handler(
        bus().get(), &DeviceWatch::noticed, new std::shared_ptr(removals_),
        [](gpointer removals) { delete static_cast<std::shared_ptr<Removals>*>(removals); });
}

DeviceWatch::~DeviceWatch() {
    if (monitor_)
        gst_device_monitor_stop(monitor_.get());
    gst_bus_set_sync_handler(bus().get(), nullptr, nullptr, nullptr);
}

BusHandle DeviceWatch::bus() const {
    return BusHandle(monitor_ ? gst_device_monitor_get_bus(monitor_.get())
                              : gst_device_provider_get_bus(provider_.get()));
}

std::vector<DeviceHandle> DeviceWatch::devices() const {
    std::vector<DeviceHandle> devices;
    GList* list = monitor_ ? gst_device_monitor_get_devices(monitor_.get())
                           : gst_device_provider_get_devices(provider_.get());
    for (GList* at = list; at; at = at->next)
        devices.emplace_back(GST_DEVICE(at->data));
    g_list_free(list);
    return devices;
}

std::shared_ptr<const void> DeviceWatch::watchRemoval(GstDevice* device,
                                                      std::function<void()> removed) {
    const auto watched = std::make_shared<const Removals::Watched>(
        Removals::Watched{.device = device, .removed = std::move(removed)});
    const std::lock_guard lock(removals_->mutex);
    removals_->watched.push_back(watched);
    return {watched.get(), [weak = std::weak_ptr(removals_)](const Removals::Watched* ended) {
                const auto removals = weak.lock();
                if (!removals)
                    return;
                const std::lock_guard inDeleter(removals->mutex);
                std::erase_if(removals->watched,
                              [ended](const auto& one) { return one.get() == ended; });
            }};
}

GstBusSyncReply DeviceWatch::noticed(GstBus* /*bus*/, GstMessage* message, gpointer context) {
    Removals& removals = **static_cast<std::shared_ptr<Removals>*>(context);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_REMOVED) {
        GstDevice* gone = nullptr;
        gst_message_parse_device_removed(message, &gone);
        const DeviceHandle owner(gone);
        std::vector<std::shared_ptr<const Removals::Watched>> concerned;
        {
            const std::lock_guard lock(removals.mutex);
            std::copy_if(removals.watched.begin(), removals.watched.end(),
                         std::back_inserter(concerned),
                         [gone](const auto& one) { return one->device == gone; });
        }
        for (const auto& one : concerned)
            one->removed();
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

}  // namespace kestrelid::capture
