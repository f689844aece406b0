#include "tests/capture/provider/TestCameraSource.h"

#include "tests/capture/provider/ControlFile.h"
#include "tests/capture/provider/FramePainter.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <gst/base/gstpushsrc.h>
#include <mutex>

namespace kestrelid::testcamera {
namespace {

enum Property : guint { kControl = 1, kDevice };

struct Camera {
    std::string control;
    std::string device;

    GstVideoInfo format{};
    std::unique_ptr<FramePainter> painter;
    std::string picture;                           // that the painter shows
    std::atomic<guint64> frameDuration = 0;        // ns
    std::uint64_t frames = 0;                      // since it was opened
    GstClockTime firstTime = GST_CLOCK_TIME_NONE;  // running time of frame 0 of this format
    std::uint64_t number = 0;                      // of this format

    std::mutex mutex;
    std::condition_variable changed;
    bool isFlushing = false;

    [[nodiscard]] std::optional<CameraEntry> entry() const { return findCamera(control, device); }

    void show(const std::string& file) {
        picture = file;
        painter = std::make_unique<FramePainter>(format, picture);
    }

    void note(const std::string& what) const { writeJournal(control, what + ' ' + device); }

    // False where the streaming thread has to leave.
    bool pause() {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::milliseconds(20), [this] { return isFlushing; });
        return !isFlushing;
    }
};

struct Source {
    GstPushSrc parent;
    Camera* camera;
};

struct SourceClass {
    GstPushSrcClass parent;
};

G_DEFINE_TYPE(Source, kestrel_test_camera_source, GST_TYPE_PUSH_SRC)

Camera& cameraOf(gpointer self) {
    return *static_cast<Source*>(self)->camera;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec*) {
    const char* text = g_value_get_string(value);
    (id == kControl ? cameraOf(object).control : cameraOf(object).device) = text ? text : "";
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec*) {
    const auto& camera = cameraOf(object);
    g_value_set_string(value, (id == kControl ? camera.control : camera.device).c_str());
}

void finalize(GObject* object) {
    delete static_cast<Source*>(static_cast<gpointer>(object))->camera;
    G_OBJECT_CLASS(kestrel_test_camera_source_parent_class)->finalize(object);
}

bool open(Source* self) {
    auto& camera = cameraOf(self);
    const auto entry = camera.entry();
    if (!entry || entry->isUnplugged) {
        GST_ELEMENT_ERROR(self, RESOURCE, NOT_FOUND, ("No such camera."), (nullptr));
        return false;
    }
    if (entry->failure == Failure::open) {
        GST_ELEMENT_ERROR(self, RESOURCE, OPEN_READ, ("The camera does not open."), (nullptr));
        return false;
    }
    camera.frames = 0;
    camera.note("opened");
    return true;
}

// The device is open from READY on, as with v4l2src.
GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
    auto* self = static_cast<Source*>(static_cast<gpointer>(element));
    if (change == GST_STATE_CHANGE_NULL_TO_READY && !open(self))
        return GST_STATE_CHANGE_FAILURE;
    const auto result =
        GST_ELEMENT_CLASS(kestrel_test_camera_source_parent_class)->change_state(element, change);
    const bool failedToOpen =
        change == GST_STATE_CHANGE_NULL_TO_READY && result == GST_STATE_CHANGE_FAILURE;
    if (change == GST_STATE_CHANGE_READY_TO_NULL || failedToOpen)
        cameraOf(self).note("closed " + std::to_string(cameraOf(self).frames));
    return result;
}

GstCaps* getCaps(GstBaseSrc* source, GstCaps* filter) {
    GstCaps* caps = nullptr;
    if (const auto entry = cameraOf(source).entry();
        entry && GST_STATE(source) >= GST_STATE_READY) {
        caps = gst_caps_new_empty();
        for (const auto& line : entry->caps) {
            if (GstCaps* one = gst_caps_from_string(line.c_str()))
                gst_caps_append(caps, one);
        }
    } else {
        caps = gst_pad_get_pad_template_caps(GST_BASE_SRC_PAD(source));
    }
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
    if (entry && entry->failure == Failure::busy) {
        GST_ELEMENT_ERROR(source, RESOURCE, BUSY, ("The camera is busy."), (nullptr));
        return FALSE;
    }
    if (!entry || !gst_video_info_from_caps(&camera.format, caps) || camera.format.fps_n <= 0)
        return FALSE;
    camera.frameDuration =
        gst_util_uint64_scale_int(GST_SECOND, camera.format.fps_d, camera.format.fps_n);
    camera.show(entry->picture);
    camera.firstTime = GST_CLOCK_TIME_NONE;
    gchar* text = gst_caps_to_string(caps);
    camera.note(std::string("format ") + text);
    g_free(text);
    return TRUE;
}

gboolean start(GstBaseSrc* source) {
    cameraOf(source).firstTime = GST_CLOCK_TIME_NONE;
    return TRUE;
}

gboolean setFlushing(GstBaseSrc* source, bool isFlushing) {
    auto& camera = cameraOf(source);
    const std::lock_guard lock(camera.mutex);
    camera.isFlushing = isFlushing;
    camera.changed.notify_all();
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
    const auto due = [&] {
        return camera.firstTime + gst_util_uint64_scale(camera.number,
                                                        GST_SECOND * camera.format.fps_d,
                                                        guint64(camera.format.fps_n));
    };
    if (camera.firstTime == GST_CLOCK_TIME_NONE || due() + 2 * camera.frameDuration < now) {
        camera.firstTime = now;
        camera.number = 0;
    }
    const auto time = due();
    ++camera.number;
    return time;
}

// OK: a frame may come. Holds the thread while the camera stalls.
GstFlowReturn awaitFrame(GstPushSrc* source, Camera& camera) {
    for (;;) {
        const auto entry = camera.entry();
        const bool isGone = !entry || entry->isUnplugged;
        if (entry && ((isGone && entry->tellsUnplugging) ||
                      (entry->errorAfter && camera.frames >= *entry->errorAfter))) {
            GST_ELEMENT_ERROR(source, RESOURCE, READ, ("The camera gives no frames."), (nullptr));
            return GST_FLOW_ERROR;
        }
        if (entry && entry->failure == Failure::start) {
            GST_ELEMENT_ERROR(source, RESOURCE, FAILED, ("The camera does not start."), (nullptr));
            return GST_FLOW_ERROR;
        }
        if (!isGone && !(entry->stallAfter && camera.frames >= *entry->stallAfter)) {
            if (camera.painter && entry->picture != camera.picture)
                camera.show(entry->picture);
            return GST_FLOW_OK;
        }
        if (!camera.pause())
            return GST_FLOW_FLUSHING;
    }
}

GstFlowReturn create(GstPushSrc* source, GstBuffer** buffer) {
    auto& camera = cameraOf(source);
    if (const auto result = awaitFrame(source, camera); result != GST_FLOW_OK)
        return result;
    if (!camera.painter)
        return GST_FLOW_NOT_NEGOTIATED;
    GstBuffer* frame = camera.painter->paint(camera.frames);
    if (!frame)
        return GST_FLOW_ERROR;
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
    object->set_property = setProperty;
    object->get_property = getProperty;
    object->finalize = finalize;
    const auto flags = GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    g_object_class_install_property(
        object, kControl, g_param_spec_string("control", "Control", "Control file", "", flags));
    g_object_class_install_property(
        object, kDevice, g_param_spec_string("device", "Device", "Name of the camera", "", flags));

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
    base->start = start;
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
