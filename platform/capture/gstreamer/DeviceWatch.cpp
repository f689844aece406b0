#include "platform/capture/gstreamer/DeviceWatch.h"

#include <algorithm>
#include <utility>

namespace kestrelid {

struct DeviceWatch::Removals {
    struct Watched {
        GstDevice* device;  // held by who watches
        std::function<void()> removed;
    };

    std::mutex mutex;
    std::vector<std::shared_ptr<const Watched>> watched;
};

std::shared_ptr<DeviceWatch> DeviceWatch::start() {
    auto watch = std::make_shared<DeviceWatch>();
    return gst_device_monitor_start(watch->monitor_.get()) ? watch : nullptr;
}

DeviceWatch::DeviceWatch()
    : monitor_(adopt(gst_device_monitor_new())), removals_(std::make_shared<Removals>()) {
    gst_device_monitor_add_filter(monitor_.get(), "Video/Source", nullptr);
    const BusHandle bus(gst_device_monitor_get_bus(monitor_.get()));
    gst_bus_set_sync_handler(
        bus.get(), &DeviceWatch::noticed, new std::shared_ptr(removals_),
        [](gpointer removals) { delete static_cast<std::shared_ptr<Removals>*>(removals); });
}

DeviceWatch::~DeviceWatch() {
    gst_device_monitor_stop(monitor_.get());
    const BusHandle bus(gst_device_monitor_get_bus(monitor_.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

std::vector<DeviceHandle> DeviceWatch::devices() const {
    std::vector<DeviceHandle> devices;
    GList* list = gst_device_monitor_get_devices(monitor_.get());
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

}  // namespace kestrelid
