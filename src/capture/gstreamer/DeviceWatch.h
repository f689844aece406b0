#pragma once

#include "capture/CameraRemote.h"
#include "capture/gstreamer/GStreamerHandles.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::capture {

// Follows which cameras come and go. Thread: any.
class DeviceWatch {
public:
    // Of all providers. Null if none starts.
    [[nodiscard]] static std::shared_ptr<DeviceWatch> start();

    // Of PipeWire behind the connection that open gives, which the devices use too. The process has
    // one and keeps it; another takes its place only where PipeWire has ended that connection, and
    // a few times at most. Null if there is none or if PipeWire does not answer in time.
    [[nodiscard]] static std::shared_ptr<DeviceWatch> ofRemote(const OpenCameraRemote& open);

    DeviceWatch(const DeviceWatch&) = delete;
    DeviceWatch& operator=(const DeviceWatch&) = delete;
    ~DeviceWatch();

    // False where PipeWire hung and was left out.
    [[nodiscard]] bool isWhole() const { return isWhole_; }

    // Those that are there now.
    [[nodiscard]] std::vector<DeviceHandle> devices() const;

    // Calls removed on any thread once device has gone, for as long as the result lives.
    [[nodiscard]] std::shared_ptr<const void> watchRemoval(GstDevice* device,
                                                           std::function<void()> removed);

    // Calls changed on any thread once a device has come, gone or changed, for as long as the
    // result lives.
    [[nodiscard]] std::shared_ptr<const void> watchAll(std::function<void()> changed);

private:
    struct Watchers;

    // One of monitor and provider.
    DeviceWatch(MonitorHandle monitor, ProviderHandle provider, base::OwnedDescriptor remote);
    [[nodiscard]] static std::shared_ptr<DeviceWatch> make(base::OwnedDescriptor remote);
    [[nodiscard]] BusHandle bus() const;

    std::shared_ptr<const void> watch(GstDevice* device, std::function<void()> tell);

    static GstBusSyncReply noticed(GstBus* bus, GstMessage* message, gpointer watchers);

    // PipeWire's plugin knows a connection by the number of its file, which must not be reused
    // while a device lives.
    const base::OwnedDescriptor remote_;
    const MonitorHandle monitor_;
    const ProviderHandle provider_;
    const std::shared_ptr<Watchers> watchers_;
    bool isWhole_ = true;
};

}  // namespace kestrelid::capture
