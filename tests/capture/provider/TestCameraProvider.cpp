#include "tests/capture/provider/TestCameraProvider.h"

#include "tests/capture/provider/ControlFile.h"
#include "tests/capture/provider/TestCameraSource.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <thread>

namespace kestrelid::testcamera {
namespace {

struct Device {
    GstDevice parent;
    gchar* control;
};

struct DeviceClass {
    GstDeviceClass parent;
};

G_DEFINE_TYPE(Device, kestrel_test_camera_device, GST_TYPE_DEVICE)

GstElement* createElement(GstDevice* device, const gchar* name) {
    GstElement* element = gst_element_factory_make(kSourceName, name);
    gchar* camera = gst_device_get_display_name(device);
    g_object_set(element, "control", static_cast<Device*>(static_cast<gpointer>(device))->control,
                 "device", camera, nullptr);
    g_free(camera);
    return element;
}

void finalizeDevice(GObject* object) {
    g_free(static_cast<Device*>(static_cast<gpointer>(object))->control);
    G_OBJECT_CLASS(kestrel_test_camera_device_parent_class)->finalize(object);
}

void kestrel_test_camera_device_init(Device*) {}

void kestrel_test_camera_device_class_init(DeviceClass* type) {
    GST_DEVICE_CLASS(type)->create_element = createElement;
    G_OBJECT_CLASS(type)->finalize = finalizeDevice;
}

GstDevice* makeDevice(const std::string& control, const CameraEntry& camera) {
    GstCaps* caps = gst_caps_new_empty();
    for (const auto& line : camera.caps) {
        if (GstCaps* one = gst_caps_from_string(line.c_str()))
            gst_caps_append(caps, one);
    }
    GstStructure* properties = gst_structure_new_empty("properties");
    for (const auto& [name, value] : camera.properties)
        gst_structure_set(properties, name.c_str(), G_TYPE_STRING, value.c_str(), nullptr);
    auto* device = g_object_new(kestrel_test_camera_device_get_type(), "display-name",
                                camera.name.c_str(), "caps", caps, "device-class", "Video/Source",
                                "properties", properties, nullptr);
    static_cast<Device*>(device)->control = g_strdup(control.c_str());
    gst_structure_free(properties);
    gst_caps_unref(caps);
    return GST_DEVICE(device);
}

std::vector<CameraEntry> pluggedCameras(const std::string& control) {
    auto cameras = readControlFile(control);
    std::erase_if(cameras, [](const CameraEntry& camera) { return camera.isUnplugged; });
    return cameras;
}

// The thread that follows the control file.
struct Watch {
    GstDeviceProvider* provider = nullptr;
    std::string control;
    std::map<std::string, GstDevice*> devices;  // owned by the provider
    std::mutex mutex;
    std::condition_variable ended;
    bool isEnding = false;
    std::thread thread;

    void follow() {
        const auto cameras = pluggedCameras(control);
        std::erase_if(devices, [&](const auto& known) {
            const bool isGone =
                std::none_of(cameras.begin(), cameras.end(),
                             [&](const auto& camera) { return camera.name == known.first; });
            if (isGone)
                gst_device_provider_device_remove(provider, known.second);
            return isGone;
        });
        for (const auto& camera : cameras) {
            if (devices.contains(camera.name))
                continue;
            GstDevice* device = makeDevice(control, camera);
            devices[camera.name] = device;
            gst_device_provider_device_add(provider, device);
        }
    }

    void run() {
        std::unique_lock lock(mutex);
        while (!ended.wait_for(lock, std::chrono::milliseconds(50), [this] { return isEnding; }))
            follow();
    }
};

struct Provider {
    GstDeviceProvider parent;
    Watch* watch;
};

struct ProviderClass {
    GstDeviceProviderClass parent;
};

G_DEFINE_TYPE(Provider, kestrel_test_camera_provider, GST_TYPE_DEVICE_PROVIDER)

std::string controlFile() {
    const char* path = std::getenv("KESTRELID_TEST_CAMERA");
    return path ? path : "";
}

GList* probe(GstDeviceProvider*) {
    GList* devices = nullptr;
    for (const auto& camera : pluggedCameras(controlFile()))
        devices = g_list_append(devices, gst_object_ref_sink(makeDevice(controlFile(), camera)));
    return devices;
}

gboolean start(GstDeviceProvider* provider) {
    auto* watch = new Watch;
    watch->provider = provider;
    watch->control = controlFile();
    watch->follow();
    watch->thread = std::thread([watch] { watch->run(); });
    static_cast<Provider*>(static_cast<gpointer>(provider))->watch = watch;
    return TRUE;
}

void stop(GstDeviceProvider* provider) {
    auto* self = static_cast<Provider*>(static_cast<gpointer>(provider));
    Watch* watch = std::exchange(self->watch, nullptr);
    if (!watch)
        return;
    {
        const std::lock_guard lock(watch->mutex);
        watch->isEnding = true;
    }
    watch->ended.notify_all();
    watch->thread.join();
    delete watch;
}

void kestrel_test_camera_provider_init(Provider*) {}

void kestrel_test_camera_provider_class_init(ProviderClass* type) {
    auto* provider = GST_DEVICE_PROVIDER_CLASS(type);
    provider->probe = probe;
    provider->start = start;
    provider->stop = stop;
    gst_device_provider_class_set_static_metadata(provider, "Test cameras", "Source/Video",
                                                  "Cameras without hardware", "Kestrelid");
}

}  // namespace

GType testCameraProviderType() {
    return kestrel_test_camera_provider_get_type();
}

}  // namespace kestrelid::testcamera
