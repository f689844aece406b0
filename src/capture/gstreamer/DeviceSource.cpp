#include "capture/gstreamer/DeviceSource.h"

#include "capture/gstreamer/CameraNames.h"
#include "capture/gstreamer/CapsFormats.h"

#include <utility>

namespace kestrelid::capture {

namespace {

// What a property holds, as text. Empty if the device has none of them.
std::string property(GstDevice* device, std::initializer_list<const char*> names) {
    const StructureHandle properties(gst_device_get_properties(device));
    for (const char* name : names) {
        const GValue* value =
            properties ? gst_structure_get_value(properties.get(), name) : nullptr;
        if (!value)
            continue;
        if (G_VALUE_HOLDS_STRING(value) && g_value_get_string(value))
            return g_value_get_string(value);
        const TextHandle text(gst_value_serialize(value));
        if (text)
            return text.get();
    }
    return {};
}

std::string providerOf(GstDevice* device) {
    GstObject* provider = gst_object_get_parent(GST_OBJECT(device));
    const std::string name = provider ? G_OBJECT_TYPE_NAME(provider) : "";
    if (provider)
        gst_object_unref(provider);
    return name;
}

AnnouncedCamera announced(GstDevice* device) {
    const TextHandle name(gst_device_get_display_name(device));
    return {.name = name ? name.get() : "",
            .node = property(device, {"api.v4l2.path", "device.path"}),
            .provider = providerOf(device)};
}

}  // namespace

DeviceSource::DeviceSource(std::shared_ptr<DeviceWatch> watch, DeviceHandle device,
                           std::vector<VideoFormat> formats)
    : watch_(std::move(watch)), device_(std::move(device)), formats_(std::move(formats)) {}

OpenedSource DeviceSource::open() const {
    const ElementHandle pipeline = adopt(gst_pipeline_new(nullptr));
    GstElement* element = gst_device_create_element(device_.get(), nullptr);
    if (!element)
        return tl::unexpected(CaptureError{"GStreamer makes no source for this camera"});
    gst_bin_add(GST_BIN(pipeline.get()), element);
    const auto change = gst_element_set_state(pipeline.get(), GST_STATE_READY);
    const BusHandle bus(gst_element_get_bus(pipeline.get()));
    const MessageHandle message(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR));
    gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    if (change == GST_STATE_CHANGE_FAILURE)
        return tl::unexpected(
            CaptureError{message ? errorText(message.get()) : "the camera does not open"});
    return shared_from_this();
}

CameraSource::Assembled DeviceSource::assemble(const VideoFormat& format) const {
    // Never the camera's own layout, so that frames are copies. Otherwise a screen that still shows
    // the last frame would keep the driver's memory, and with it the device.
    const char* shown = format.layout == "BGRx" ? "BGRA" : "BGRx";
    Assembled assembled = parsePipeline(
        std::string("capsfilter name=") + kFilterName +
        " ! queue leaky=downstream max-size-buffers=1 max-size-bytes=0 max-size-time=0" +
        (format.encoding == Encoding::jpeg ? " ! jpegdec" : "") +
        " ! videoconvert ! video/x-raw,format=" + shown + " ! appsink name=" + kSinkName +
        " sync=false async=false max-buffers=1 drop=true");
    if (!assembled)
        return assembled;
    GstElement* element = gst_device_create_element(device_.get(), nullptr);
    if (!element)
        return tl::unexpected(CaptureError{"GStreamer makes no source for this camera"});
    gst_bin_add(GST_BIN(assembled->get()), element);
    const ElementHandle filter(gst_bin_get_by_name(GST_BIN(assembled->get()), kFilterName));
    const CapsHandle caps = capsFor(format);
    g_object_set(filter.get(), "caps", caps.get(), nullptr);
    if (!gst_element_link(element, filter.get()))
        return tl::unexpected(CaptureError{"the camera does not deliver what it announces"});
    return assembled;
}

std::shared_ptr<const void> DeviceSource::watchRemoval(std::function<void()> removed) const {
    return watch_->watchRemoval(device_.get(), std::move(removed));
}

std::vector<FoundCamera> findCameras(const std::shared_ptr<DeviceWatch>& watch) {
    std::vector<DeviceHandle> usable;
    std::vector<std::vector<VideoFormat>> formats;
    std::vector<AnnouncedCamera> all;
    for (DeviceHandle& device : watch->devices()) {
        const CapsHandle caps(gst_device_get_caps(device.get()));
        std::vector<VideoFormat> offered = formatsIn(caps.get());
        if (offered.empty())
            continue;  // a node for something else than pictures
        all.push_back(announced(device.get()));
        formats.push_back(std::move(offered));
        usable.push_back(std::move(device));
    }
    std::vector<FoundCamera> found;
    for (NamedCamera& camera : nameCameras(all)) {
        GstDevice* device = usable[camera.index].get();
        const Mounting mounting = mountingFrom(property(device, {"api.libcamera.location"}),
                                               property(device, {"api.libcamera.rotation"}));
        found.push_back(
            {.name = std::move(camera.name),
             .mounting = mounting,
             .source = std::make_shared<const DeviceSource>(watch, std::move(usable[camera.index]),
                                                            std::move(formats[camera.index]))});
    }
    return found;
}

}  // namespace kestrelid::capture
