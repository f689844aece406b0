#include "tests/capture/provider/TestCamera.h"

#include <atomic>
#include <gst/base/gstpushsrc.h>
#include <gst/video/video.h>
#include <memory>

namespace kestrelid::testcamera {
namespace {

struct ReleaseBuffer {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using Buffers = std::vector<std::unique_ptr<GstBuffer, ReleaseBuffer>>;

// What follows the drawing in a pipeline.
std::string conversionTo(const GstVideoInfo& format) {
    const bool isJpeg = GST_VIDEO_INFO_FORMAT(&format) == GST_VIDEO_FORMAT_ENCODED;
    GstVideoInfo raw = format;
    if (isJpeg) {
        gst_video_info_set_format(&raw, GST_VIDEO_FORMAT_I420, guint(format.width),
                                  guint(format.height));
        gst_video_colorimetry_from_string(&raw.colorimetry, "1:4:0:0");  // as JFIF has it
    }
    raw.fps_n = 30;
    raw.fps_d = 1;
    GstCaps* caps = gst_video_info_to_caps(&raw);
    gchar* text = gst_caps_to_string(caps);
    const std::string conversion = std::string(" ! videoconvert ! videoscale add-borders=true ! ") +
                                   text + (isJpeg ? " ! jpegenc" : "");
    g_free(text);
    gst_caps_unref(caps);
    return conversion;
}

// Of a PNG or JPEG file, shown whole on black, or of colour bars that move. Empty where that fails.
Buffers paintFrames(const GstVideoInfo& format, const std::string& picture) {
    const std::string drawing =
        picture.empty() ? "videotestsrc num-buffers=4 horizontal-speed=16"
                        : "filesrc location=\"" + picture +
                              "\" ! decodebin ! videoconvert ! imagefreeze num-buffers=4";
    GstElement* pipeline = gst_parse_launch(
        (drawing + conversionTo(format) + " ! appsink name=sink sync=false").c_str(), nullptr);
    if (!pipeline)
        return {};
    GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    Buffers frames;
    for (GstSample* sample = nullptr;; gst_sample_unref(sample)) {
        g_signal_emit_by_name(sink, "try-pull-sample", 10 * GST_SECOND, &sample);
        if (!sample)
            break;
        frames.emplace_back(gst_buffer_copy(gst_sample_get_buffer(sample)));
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(sink);
    gst_object_unref(pipeline);
    return frames;
}

struct Camera {
    std::string device;
    GstVideoInfo format{};
    Buffers pictures;                        // shown in turn
    std::string picture;                     // the file that they show
    std::atomic<guint64> frameDuration = 0;  // ns
    std::uint64_t frames = 0;                // since it was opened
    GstClockTime nextTime = GST_CLOCK_TIME_NONE;
    std::atomic<bool> isFlushing = false;

    [[nodiscard]] std::optional<CameraEntry> entry() const { return findCamera(device); }

    void show(const std::string& file) {
        picture = file;
        pictures = paintFrames(format, picture);
    }

    void note(const std::string& what) const { writeJournal(what + ' ' + device); }
};

struct Source {
    GstPushSrc parent;
    Camera* camera;
};

using SourceClass = GstPushSrcClass;

G_DEFINE_TYPE(Source, kestrel_test_camera_source, GST_TYPE_PUSH_SRC)

Camera& cameraOf(gpointer self) {
    return *static_cast<Source*>(self)->camera;
}

void setDevice(GObject* object, guint, const GValue* value, GParamSpec*) {
    cameraOf(object).device = g_value_get_string(value);
}

void finalize(GObject* object) {
    delete &cameraOf(object);
    G_OBJECT_CLASS(kestrel_test_camera_source_parent_class)->finalize(object);
}

bool open(GstElement* self) {
    auto& camera = cameraOf(self);
    const auto entry = camera.entry();
    if (!entry || entry->isUnplugged) {
        GST_ELEMENT_ERROR(self, RESOURCE, NOT_FOUND, ("No such camera."), (nullptr));
        return false;
    }
    if (entry->failure == "open") {
        GST_ELEMENT_ERROR(self, RESOURCE, OPEN_READ, ("The camera does not open."), (nullptr));
        return false;
    }
    camera.frames = 0;
    camera.note("opened");
    return true;
}

// The device is open from READY on, as with v4l2src.
GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
    for (auto entry = cameraOf(element).entry(); entry && entry->hangs;
         entry = cameraOf(element).entry())
        g_usleep(5000);
    if (change == GST_STATE_CHANGE_NULL_TO_READY && !open(element))
        return GST_STATE_CHANGE_FAILURE;
    const auto result =
        GST_ELEMENT_CLASS(kestrel_test_camera_source_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_READY_TO_NULL)
        cameraOf(element).note("closed " + std::to_string(cameraOf(element).frames));
    return result;
}

GstCaps* getCaps(GstBaseSrc* source, GstCaps* filter) {
    const auto entry = cameraOf(source).entry();
    GstCaps* caps = entry && GST_STATE(source) >= GST_STATE_READY
                        ? entry->allCaps()
                        : gst_pad_get_pad_template_caps(GST_BASE_SRC_PAD(source));
    if (filter) {
        GstCaps* both = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(caps);
        caps = both;
    }
    return caps;
}

gboolean setCaps(GstBaseSrc* source, GstCaps* caps) {
    auto& camera = cameraOf(source);
    const auto entry = camera.entry();
    if (!entry || !gst_video_info_from_caps(&camera.format, caps) || camera.format.fps_n <= 0)
        return FALSE;
    camera.frameDuration =
        gst_util_uint64_scale_int(GST_SECOND, camera.format.fps_d, camera.format.fps_n);
    camera.show(entry->picture);
    camera.nextTime = GST_CLOCK_TIME_NONE;
    gchar* text = gst_caps_to_string(caps);
    camera.note(std::string("format ") + text);
    g_free(text);
    return TRUE;
}

gboolean setFlushing(GstBaseSrc* source, bool isFlushing) {
    cameraOf(source).isFlushing = isFlushing;
    return TRUE;
}

gboolean query(GstBaseSrc* source, GstQuery* question) {
    const guint64 duration = cameraOf(source).frameDuration;
    if (GST_QUERY_TYPE(question) == GST_QUERY_LATENCY && duration > 0) {
        gst_query_set_latency(question, TRUE, duration, duration);
        return TRUE;
    }
    return GST_BASE_SRC_CLASS(kestrel_test_camera_source_parent_class)->query(source, question);
}

// The base class waits for the buffer's time.
void getTimes(GstBaseSrc*, GstBuffer* buffer, GstClockTime* begin, GstClockTime* end) {
    *begin = GST_BUFFER_PTS(buffer);
    *end = GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer);
}

// When the next frame is due; frames that nobody took in time are left out.
GstClockTime nextTime(GstElement* element, Camera& camera) {
    GstClockTime now = 0;
    if (GstClock* clock = gst_element_get_clock(element)) {
        const auto time = gst_clock_get_time(clock);
        const auto base = gst_element_get_base_time(element);
        now = time > base ? time - base : 0;
        gst_object_unref(clock);
    }
    const GstClockTime due = camera.nextTime;
    const bool isOver = due == GST_CLOCK_TIME_NONE || due + 2 * camera.frameDuration < now;
    const GstClockTime time = isOver ? now : due;
    camera.nextTime = time + camera.frameDuration;
    return time;
}

// OK: a frame may come. Holds the thread while the camera stalls.
GstFlowReturn awaitFrame(GstPushSrc* source, Camera& camera) {
    for (;;) {
        const auto entry = camera.entry();
        const bool isGone = !entry || entry->isUnplugged;
        if (entry && isGone && entry->tellsUnplugging) {
            GST_ELEMENT_ERROR(source, RESOURCE, READ, ("The camera gives no frames."), (nullptr));
            return GST_FLOW_ERROR;
        }
        if (entry && entry->failure == "start") {
            GST_ELEMENT_ERROR(source, RESOURCE, FAILED, ("The camera does not start."), (nullptr));
            return GST_FLOW_ERROR;
        }
        if (!isGone && !(entry->stallAfter && camera.frames >= *entry->stallAfter)) {
            if (entry->picture != camera.picture)
                camera.show(entry->picture);
            return GST_FLOW_OK;
        }
        if (camera.isFlushing)
            return GST_FLOW_FLUSHING;
        g_usleep(5000);
    }
}

GstFlowReturn create(GstPushSrc* source, GstBuffer** buffer) {
    auto& camera = cameraOf(source);
    if (const auto result = awaitFrame(source, camera); result != GST_FLOW_OK)
        return result;
    if (camera.pictures.empty())
        return GST_FLOW_NOT_NEGOTIATED;
    GstBuffer* frame =
        gst_buffer_copy(camera.pictures[camera.frames % camera.pictures.size()].get());
    GST_BUFFER_PTS(frame) = nextTime(GST_ELEMENT(source), camera);
    GST_BUFFER_DURATION(frame) = camera.frameDuration;
    GST_BUFFER_OFFSET(frame) = camera.frames++;
    if (camera.frames % 30 == 1)
        camera.note("frames " + std::to_string(camera.frames));
    *buffer = frame;
    return GST_FLOW_OK;
}

void kestrel_test_camera_source_init(Source* self) {
    self->camera = new Camera;
    gst_base_src_set_live(GST_BASE_SRC(self), TRUE);
    gst_base_src_set_format(GST_BASE_SRC(self), GST_FORMAT_TIME);
}

void kestrel_test_camera_source_class_init(SourceClass* type) {
    auto* object = G_OBJECT_CLASS(type);
    object->set_property = setDevice;
    object->finalize = finalize;
    const auto flags = GParamFlags(G_PARAM_WRITABLE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(
        object, 1, g_param_spec_string("device", "Device", "Name of the camera", "", flags));

    auto* element = GST_ELEMENT_CLASS(type);
    element->change_state = changeState;
    gst_element_class_set_static_metadata(element, "Test camera", "Source/Video",
                                          "A camera without hardware", "Kestrelid");
    GstCaps* caps = gst_caps_from_string("video/x-raw; image/jpeg");
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    auto* base = GST_BASE_SRC_CLASS(type);
    base->get_caps = getCaps;
    base->set_caps = setCaps;
    base->unlock = [](GstBaseSrc* source) { return setFlushing(source, true); };
    base->unlock_stop = [](GstBaseSrc* source) { return setFlushing(source, false); };
    base->query = query;
    base->get_times = getTimes;
    GST_PUSH_SRC_CLASS(type)->create = create;
}

}  // namespace

GType testCameraSourceType() {
    return kestrel_test_camera_source_get_type();
}

}  // namespace kestrelid::testcamera
