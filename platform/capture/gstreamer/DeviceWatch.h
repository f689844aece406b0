#pragma once

#include "platform/capture/gstreamer/GStreamerHandles.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid {

// Follows which cameras come and go. Thread: any.
class DeviceWatch {
public:
    // Null where no provider starts.
    [[nodiscard]] static std::shared_ptr<DeviceWatch> start();

    DeviceWatch();
    DeviceWatch(const DeviceWatch&) = delete;
    DeviceWatch& operator=(const DeviceWatch&) = delete;
    ~DeviceWatch();

    // Those that are there now.
    [[nodiscard]] std::vector<DeviceHandle> devices() const;

    // Calls removed on any thread once device has gone, for as long as the result lives.
    [[nodiscard]] std::shared_ptr<const void> watchRemoval(GstDevice* device,
                                                           std::function<void()> removed);

private:
    struct Removals;

    static GstBusSyncReply noticed(GstBus* bus, GstMessage* message, gpointer removals);

    const MonitorHandle monitor_;
    const std::shared_ptr<Removals> removals_;
};

}  // namespace kestrelid
