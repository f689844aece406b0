#include "tests/capture/provider/TestCamera.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#define PACKAGE "kestrelid"

// Offers the cameras of the control file as Video/Source devices, and follows the file.
namespace kestrelid::testcamera {
namespace {

constexpr const char* kNameProperty = "test.name";

using Device = GstDevice;
using DeviceClass = GstDeviceClass;

G_DEFINE_TYPE(Device, kestrel_test_camera_device, GST_TYPE_DEVICE)

GstElement* createElement(GstDevice* device, const gchar* name) {
    GstElement* element = gst_element_factory_make(kSourceName, name);
    GstStructure* properties = gst_device_get_properties(device);
    g_object_set(element, "device", gst_structure_get_string(properties, kNameProperty), nullptr);
    gst_structure_free(properties);
    return element;
}

void kestrel_test_camera_device_init(Device*) {}

void kestrel_test_camera_device_class_init(DeviceClass* type) {
    type->create_element = createElement;
}

GstDevice* makeDevice(const CameraEntry& camera) {
    GstCaps* caps = camera.allCaps();
    GstStructure* properties =
        gst_structure_new("properties", kNameProperty, G_TYPE_STRING, camera.name.c_str(), nullptr);
    for (const auto& [name, value] : camera.properties)
        gst_structure_set(properties, name.c_str(), G_TYPE_STRING, value.c_str(), nullptr);
    auto* device = g_object_new(kestrel_test_camera_device_get_type(), "display-name",
                                camera.shownName.c_str(), "caps", caps, "device-class",
                                "Video/Source", "properties", properties, nullptr);
    gst_structure_free(properties);
    gst_caps_unref(caps);
    return GST_DEVICE(device);
}

std::vector<CameraEntry> pluggedCameras() {
    auto cameras = readControlFile();
    std::erase_if(cameras, [](const CameraEntry& camera) { return camera.isUnplugged; });
    return cameras;
}

// The thread that follows the control file.
struct Watch {
    explicit Watch(GstDeviceProvider* owner) : provider(owner) {
        const std::lock_guard lock(mutex);
        follow();
    }

    GstDeviceProvider* provider;
    struct Known {
        GstDevice* device;  // owned by the provider
        std::vector<std::string> caps;
    };
    std::map<std::string, Known> devices;  // by name
    std::optional<std::string> followed;   // generation of the control file
    std::mutex mutex;
    std::condition_variable_any ended;
    std::jthread thread{[this](const std::stop_token& stop) {
        std::unique_lock lock(mutex);
        while (!ended.wait_for(lock, stop, std::chrono::milliseconds(50),
                               [&] { return stop.stop_requested(); }))
            follow();
    }};

    ~Watch() {
        thread.request_stop();
        thread.join();
        tellFollowed(std::nullopt);
    }

    void follow() {
        const std::string generation = readGeneration();
        const auto cameras = pluggedCameras();
        // One whose formats have changed is plugged in anew.
        std::erase_if(devices, [&](const auto& known) {
            const bool isGone =
                std::none_of(cameras.begin(), cameras.end(), [&](const auto& camera) {
                    return camera.name == known.first && camera.caps == known.second.caps;
                });
            if (isGone)
                gst_device_provider_device_remove(provider, known.second.device);
            return isGone;
        });
        for (const auto& camera : cameras) {
            if (devices.contains(camera.name))
                continue;
            GstDevice* device = makeDevice(camera);
            devices[camera.name] = {.device = device, .caps = camera.caps};
            gst_device_provider_device_add(provider, device);
        }
        if (std::exchange(followed, generation) != generation)
            tellFollowed(generation);
    }
};

struct Provider {
    GstDeviceProvider parent;
    Watch* watch;
};

using ProviderClass = GstDeviceProviderClass;

G_DEFINE_TYPE(Provider, kestrel_test_camera_provider, GST_TYPE_DEVICE_PROVIDER)

Watch*& watchOf(gpointer provider) {
    return static_cast<Provider*>(provider)->watch;
}

gboolean start(GstDeviceProvider* provider) {
    watchOf(provider) = new Watch(provider);
    return TRUE;
}

void stop(GstDeviceProvider* provider) {
    delete std::exchange(watchOf(provider), nullptr);
}

void kestrel_test_camera_provider_init(Provider*) {}

void kestrel_test_camera_provider_class_init(ProviderClass* type) {
    type->start = start;
    type->stop = stop;
    gst_device_provider_class_set_static_metadata(type, "Test cameras", "Source/Video",
                                                  "Cameras without hardware", "Kestrelid");
}

gboolean initialize(GstPlugin* plugin) {
    if (std::getenv("KESTRELID_TEST_SLOW_PLUGIN")) {
        writeJournal("loading");
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        writeJournal("loaded");
    }
    return gst_element_register(plugin, kSourceName, GST_RANK_NONE, testCameraSourceType()) &&
           gst_device_provider_register(plugin, "kestreltestcameraprovider", GST_RANK_PRIMARY,
                                        kestrel_test_camera_provider_get_type());
}

}  // namespace
}  // namespace kestrelid::testcamera

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kestreltestcamera,
                  "Cameras without hardware", kestrelid::testcamera::initialize, "1.0",
                  "Apache 2.0", "kestrelid", "kestrelid")
