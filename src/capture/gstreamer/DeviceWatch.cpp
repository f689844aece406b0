#include "capture/gstreamer/DeviceWatch.h"

#include "base/ExitGate.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <future>
#include <optional>
#include <poll.h>
#include <system_error>
#include <thread>
#include <utility>

namespace kestrelid::capture {

struct DeviceWatch::Watchers {
    struct Watcher {
        GstDevice* device;  // whose removal it is told, and held by it; null: of all, and all
        std::function<void()> tell;
    };

    // Without memory for it nobody is told.
    void tell(GstDevice* gone) noexcept try {
        std::vector<std::shared_ptr<const Watcher>> concerned;
        {
            const std::lock_guard lock(mutex);
            std::copy_if(all.begin(), all.end(), std::back_inserter(concerned),
                         [gone](const auto& one) { return !one->device || one->device == gone; });
        }
        for (const auto& one : concerned)
            one->tell();
    } catch (const std::exception&) {
    }

    std::mutex mutex;
    std::vector<std::shared_ptr<const Watcher>> all;
};

namespace {

constexpr const char* kPipeWire = "pipewiredeviceprovider";

// PipeWire's plugin (0.3.65) damages the heap when a provider stops: it takes a proxy away under
// the thread that still uses it, and leaves its listeners on a connection that others may share. So
// a provider that has started stays until the process ends, and with it one connection and its
// threads. It also waits without end for a PipeWire that hangs, on a thread of its own for that.
std::shared_future<void> startForGood(GstDeviceProvider* provider) {
    auto started = std::make_shared<std::promise<void>>();
    std::shared_future<void> future = started->get_future().share();
    try {
        std::thread([started = std::move(started), provider] {
            gst_device_provider_start(provider);
            started->set_value();
        }).detach();
        return future;
    } catch (const std::system_error&) {
        return {};  // the machine has no thread left
    }
}

constexpr std::chrono::seconds kPatience{2};

bool hasStarted(const std::shared_future<void>& future, std::chrono::seconds patience = kPatience) {
    return future.valid() && future.wait_for(patience) == std::future_status::ready;
}

GstDeviceProvider* sharedPipeWire() {
    const base::ExitGate::Pass pass;
    return pass ? gst_device_provider_factory_get_by_name(kPipeWire) : nullptr;
}

// The provider that the whole program shares counts its starts: one more than there are stops.
// False where PipeWire hangs, which is waited for once. One call at a time.
bool keepPipeWire() {
    static auto patience = kPatience;
    static GstDeviceProvider* shared = sharedPipeWire();
    static const std::shared_future<void> started =
        shared ? startForGood(shared) : std::shared_future<void>();
    return !shared || hasStarted(started, std::exchange(patience, std::chrono::seconds(0)));
}

// Hides PipeWire's provider from monitors that are made meanwhile, as they would wait for it.
class HiddenPipeWire {
public:
    HiddenPipeWire() : factory_(gst_device_provider_factory_find(kPipeWire)) { swapRank(); }
    ~HiddenPipeWire() { swapRank(); }
    HiddenPipeWire(const HiddenPipeWire&) = delete;
    HiddenPipeWire& operator=(const HiddenPipeWire&) = delete;

private:
    void swapRank() {
        GstPluginFeature* feature = GST_PLUGIN_FEATURE(factory_.get());
        const guint rank = gst_plugin_feature_get_rank(feature);
        gst_plugin_feature_set_rank(feature, std::exchange(rank_, rank));
    }

    const FactoryHandle factory_;
    guint rank_ = GST_RANK_NONE;
};

// Whether the other side has closed the connection.
bool isCutOff(const base::OwnedDescriptor& connection) {
    pollfd end{.fd = connection.number(), .events = POLLRDHUP, .revents = 0};
    return ::poll(&end, 1, 0) == 1;
}

}  // namespace

std::shared_ptr<DeviceWatch> DeviceWatch::start() {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const bool isWhole = keepPipeWire();
    const base::ExitGate::Pass pass;
    if (!pass)
        return nullptr;
    MonitorHandle monitor = adopt(gst_device_monitor_new());
    {
        std::optional<HiddenPipeWire> hidden;
        if (!isWhole)
            hidden.emplace();
        gst_device_monitor_add_filter(monitor.get(), "Video/Source", nullptr);
    }
    std::shared_ptr<DeviceWatch> watch(new DeviceWatch(std::move(monitor), nullptr, {}));
    watch->isWhole_ = isWhole;
    return gst_device_monitor_start(watch->monitor_.get()) ? watch : nullptr;
}

std::shared_ptr<DeviceWatch> DeviceWatch::ofRemote(const OpenCameraRemote& open) {
    constexpr std::size_t kMost = 16;
    struct Kept {
        std::shared_ptr<DeviceWatch> watch;
        std::shared_future<void> started;
    };
    static std::mutex mutex;
    static auto& kept = *new std::vector<Kept>;  // never destroyed
    const std::lock_guard lock(mutex);
    if (kept.empty() || (isCutOff(kept.back().watch->remote_) && kept.size() < kMost)) {
        auto watch = make(open());
        if (!watch)
            return nullptr;
        kept.push_back({.watch = std::move(watch), .started = {}});
        kept.back().started = startForGood(kept.back().watch->provider_.get());
    }
    const auto& [watch, started] = kept.back();
    return hasStarted(started) && !isCutOff(watch->remote_) ? watch : nullptr;
}

std::shared_ptr<DeviceWatch> DeviceWatch::make(base::OwnedDescriptor remote) {
    constexpr const char* kFile = "fd";
    const FactoryHandle factory(gst_device_provider_factory_find(kPipeWire));
    const base::ExitGate::Pass pass;
    if (!remote.isOpen() || isCutOff(remote) || !factory || !pass)
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

DeviceWatch::DeviceWatch(MonitorHandle monitor, ProviderHandle provider,
                         base::OwnedDescriptor remote)
    : remote_(std::move(remote)), monitor_(std::move(monitor)), provider_(std::move(provider)),
      watchers_(std::make_shared<Watchers>()) {
    gst_bus_set_sync_handler(
        bus().get(), &DeviceWatch::noticed, new std::shared_ptr(watchers_),
        [](gpointer watchers) { delete static_cast<std::shared_ptr<Watchers>*>(watchers); });
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
    return watch(device, std::move(removed));
}

std::shared_ptr<const void> DeviceWatch::watchAll(std::function<void()> changed) {
    return watch(nullptr, std::move(changed));
}

std::shared_ptr<const void> DeviceWatch::watch(GstDevice* device, std::function<void()> tell) {
    const auto watcher = std::make_shared<const Watchers::Watcher>(
        Watchers::Watcher{.device = device, .tell = std::move(tell)});
    const std::lock_guard lock(watchers_->mutex);
    watchers_->all.push_back(watcher);
    return {watcher.get(), [weak = std::weak_ptr(watchers_)](const Watchers::Watcher* ended) {
                const auto watchers = weak.lock();
                if (!watchers)
                    return;
                const std::lock_guard inDeleter(watchers->mutex);
                std::erase_if(watchers->all,
                              [ended](const auto& one) { return one.get() == ended; });
            }};
}

GstBusSyncReply DeviceWatch::noticed(GstBus* /*bus*/, GstMessage* message, gpointer context) {
    Watchers& watchers = **static_cast<std::shared_ptr<Watchers>*>(context);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_REMOVED) {
        GstDevice* gone = nullptr;
        gst_message_parse_device_removed(message, &gone);
        const DeviceHandle owner(gone);
        watchers.tell(gone);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_ADDED ||
               GST_MESSAGE_TYPE(message) == GST_MESSAGE_DEVICE_CHANGED) {
        watchers.tell(nullptr);
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

}  // namespace kestrelid::capture
