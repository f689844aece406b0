#include "capture/gstreamer/DeviceSource.h"

#include "capture/gstreamer/CameraNames.h"
#include "capture/gstreamer/CameraPreference.h"
#include "capture/gstreamer/CapsFormats.h"
#include "capture/gstreamer/GStreamerLibrary.h"

#include <algorithm>
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

std::string nodeOf(GstDevice* device) {
    return property(device, {"api.v4l2.path", "device.path"});
}

std::string providerOf(GstDevice* device) {
    GstObject* provider = gst_object_get_parent(GST_OBJECT(device));
    const std::string name = provider ? G_OBJECT_TYPE_NAME(provider) : "";
    if (provider)
        gst_object_unref(provider);
    return name;
}

AnnouncedCamera announcedCamera(GstDevice* device) {
    const TextHandle name(gst_device_get_display_name(device));
    return {.name = name ? name.get() : "", .node = nodeOf(device), .provider = providerOf(device)};
}

}  // namespace

DeviceSource::DeviceSource(std::shared_ptr<DeviceWatch> watch, GstDevice* device, std::string name,
                           std::shared_ptr<const Devices> beside, std::vector<VideoFormat> formats)
    : watch_(std::move(watch)), device_(device), name_(std::move(name)), beside_(std::move(beside)),
      formats_(std::move(formats)) {}

CameraSource::Assembled DeviceSource::assemble(const VideoFormat& format) const {
    // Frames are converted only once somebody looks at them: FrameConverter.
    std::string decoding;
    if (format.encoding == Encoding::h264) {
        const std::optional<std::string> decoder = h264Decoder();
        if (!decoder)
            return tl::unexpected(CaptureError{kNoH264Decoder});
        decoding = " ! h264parse ! " + *decoder + " ! capsfilter caps=video/x-raw name=" + kTapName;
    }
    Assembled assembled = parsePipeline(
        std::string("capsfilter name=") + kFilterName + decoding +
        " ! queue leaky=downstream max-size-buffers=1 max-size-bytes=0 max-size-time=0"
        " ! appsink name=" +
        kSinkName + " sync=false async=false max-buffers=1 drop=true");
    if (!assembled)
        return assembled;
    GstElement* element = gst_device_create_element(device_, nullptr);
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
    return watch_->watchRemoval(device_, std::move(removed));
}

// GStreamer itself offers none of what is wanted, as of Debian 12: pipewiresrc 0.3.65 has no
// property for a control, libcamerasrc 0.0.3 none but the camera's name, and those of v4l2src 1.22
// are brightness, contrast, hue and saturation.
std::string DeviceSource::controlNode() const {
    return nodeOf(device_);
}

bool DeviceSource::isSameAs(const CameraSource& other) const {
    const auto* device = dynamic_cast<const DeviceSource*>(&other);
    return device && device->device_ == device_;
}

bool DeviceSource::stoodBeside(const DeviceSource& other) const {
    return std::any_of(beside_->begin(), beside_->end(),
                       [&](const DeviceHandle& device) { return device.get() == other.device_; });
}

// Plugged in again it is another device of the same name; one that stood beside it is its twin.
std::shared_ptr<const CameraSource> DeviceSource::announced() const {
    std::shared_ptr<const CameraSource> again;
    for (const FoundCamera& camera : findCameras(watch_)) {
        if (camera.source->device_ == device_)
            return shared_from_this();
        if (!again && camera.source->name_ == name_ && !stoodBeside(*camera.source))
            again = camera.source;
    }
    return again;
}

std::vector<FoundCamera> findCameras(const std::shared_ptr<DeviceWatch>& watch) {
    const auto devices = std::make_shared<const Devices>(watch->devices());
    std::vector<GstDevice*> usable;
    std::vector<std::vector<VideoFormat>> formats;
    std::vector<AnnouncedCamera> all;
    for (const DeviceHandle& device : *devices) {
        const CapsHandle caps(gst_device_get_caps(device.get()));
        std::vector<VideoFormat> offered = formatsIn(caps.get());
        if (offered.empty())
            continue;  // a node for something else than pictures
        const auto isH264 = [](const VideoFormat& one) { return one.encoding == Encoding::h264; };
        if (!std::ranges::all_of(offered, isH264))
            std::erase_if(offered, isH264);  // decoding costs time, and frames come late
        all.push_back(announcedCamera(device.get()));
        formats.push_back(std::move(offered));
        usable.push_back(device.get());
    }
    std::vector<FoundCamera> found;
    for (NamedCamera& camera : nameCameras(all)) {
        GstDevice* device = usable[camera.index];
        const std::string location = property(device, {"api.libcamera.location"});
        const bool infrared = isInfrared(camera.name, formats[camera.index]);
        const bool needsDecoder = formats[camera.index].front().encoding == Encoding::h264;
        found.push_back(
            {.name = std::move(camera.name),
             .mounting = mountingFrom(location, property(device, {"api.libcamera.rotation"})),
             .position = positionFrom(location),
             .isInfrared = infrared,
             .obstacle = needsDecoder && !h264Decoder() ? kNoH264Decoder : "",
             .source = std::make_shared<const DeviceSource>(
                 watch, device, std::move(all[camera.index].name), devices,
                 std::move(formats[camera.index]))});
    }
    const auto rank = [](const FoundCamera& camera) {
        return std::make_pair(!camera.obstacle.empty(),
                              preferenceOf(camera.position, camera.isInfrared));
    };
    std::ranges::stable_sort(found, {}, rank);
    return found;
}

}  // namespace kestrelid::capture
