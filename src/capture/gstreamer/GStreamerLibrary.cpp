#include "capture/gstreamer/GStreamerLibrary.h"

#include "base/ExitGate.h"
#include "capture/gstreamer/GStreamerHandles.h"

#include <array>
#include <cstddef>

namespace kestrelid::capture {

namespace {

struct Need {
    const char* element;
    const char* purpose;
    const char* package;
};

constexpr std::array kNeeds = {
    Need{"appsink", "frames", "gstreamer1.0-plugins-base"},
    Need{"uridecodebin", "video files", "gstreamer1.0-plugins-base"},
    Need{"v4l2src", "cameras", "gstreamer1.0-plugins-good"},
    Need{"jpegdec", "motion JPEG files", "gstreamer1.0-plugins-good"},
    Need{"matroskademux", "Matroska and WebM files", "gstreamer1.0-plugins-good"},
    Need{"qtdemux", "MP4 files", "gstreamer1.0-plugins-good"},
    Need{"openh264dec", "H.264 files and cameras", "gstreamer1.0-plugins-bad"},
    Need{"pipewiresrc", "cameras by PipeWire", "gstreamer1.0-pipewire"},
};

bool exists(const char* element) {
    GstElementFactory* factory = gst_element_factory_find(element);
    if (factory)
        gst_object_unref(factory);
    return factory != nullptr;
}

}  // namespace

bool startGStreamer() {
    const base::ExitGate::Pass pass;
    if (!pass)
        return false;
    GError* error = nullptr;
    const bool started = gst_init_check(nullptr, nullptr, &error) != FALSE;
    const ErrorHandle owner(error);
    return started;
}

std::optional<std::string> h264Decoder() {
    if (!startGStreamer() || !exists("h264parse"))
        return std::nullopt;
    const CapsHandle caps(gst_caps_new_empty_simple("video/x-h264"));
    GList* decoders =
        gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER, GST_RANK_MARGINAL);
    GList* fitting = gst_element_factory_list_filter(decoders, caps.get(), GST_PAD_SINK, FALSE);
    std::optional<std::string> best;
    if (fitting)
        best = gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(fitting->data));
    gst_plugin_feature_list_free(fitting);
    gst_plugin_feature_list_free(decoders);
    return best;
}

std::vector<ServiceStatus> diagnoseGStreamer() {
    if (!startGStreamer())
        return {{.name = "GStreamer", .available = false, .details = "does not start"}};
    const TextHandle version(gst_version_string());
    std::vector<ServiceStatus> all;
    all.push_back({.name = "GStreamer", .available = true, .details = version.get()});
    for (const Need& need : kNeeds) {
        const bool found = exists(need.element);
        all.push_back({.name = std::string("GStreamer ") + need.element,
                       .available = found,
                       .details = found ? need.purpose
                                        : std::string(need.purpose) + " need " + need.package});
    }
    return all;
}

}  // namespace kestrelid::capture
