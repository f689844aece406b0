#include "tests/capture/provider/PaintedFrames.h"
#include "tests/capture/provider/TestCamera.h"

#include <algorithm>
#include <atomic>
#include <gst/base/gstpushsrc.h>
#include <gst/video/video.h>
#include <mutex>
#include <set>

namespace kestrelid::testcamera {
namespace {

// Cameras that only one source can have, those of this process that have one.
class Exclusive {
public:
    bool take(const std::string& device) {
        const std::lock_guard lock(mutex_);
        return taken_.insert(device).second;
    }
    void giveBack(const std::string& device) {
        const std::lock_guard lock(mutex_);
        taken_.erase(device);
    }

private:
    std::mutex mutex_;
    std::set<std::string> taken_;
};
Exclusive exclusive;

struct Camera {
    std::string device;
    GstVideoInfo format{};
    GstCaps* caps = nullptr;  // of format
    Buffers pictures;         // shown in turn
    std::string picture;      // the file that they show
    Sight sight = Sight::sharp;
    std::size_t next = 0;                    // of pictures
    std::atomic<guint64> frameDuration = 0;  // ns
    std::uint64_t frames = 0;                // since it was opened
    std::uint64_t framesInFormat = 0;
    bool hasChangedCaps = false;  // by itself, since it was opened
    bool holdsDevice = false;
    GstClockTime nextTime = GST_CLOCK_TIME_NONE;
    std::atomic<bool> isFlushing = false;

    ~Camera() { gst_caps_replace(&caps, nullptr); }

    [[nodiscard]] std::optional<CameraEntry> entry() const { return findCamera(device); }

    void show(const CameraEntry& entry) {
        const Sight wanted = framesInFormat < entry.settle                   ? Sight::black
                             : framesInFormat < entry.settle + entry.blurred ? Sight::blurred
                                                                             : Sight::sharp;
        if (!pictures.empty() && entry.picture == picture && wanted == sight)
            return;
        picture = entry.picture;
        sight = wanted;
        next = 0;
        pictures = paintFrames(caps, picture, sight);
    }

    // As a driver that takes its time: only the end of the test, which takes the camera's
    // description away, ends it sooner, or the base class where it waits for a frame.
    // False: the base class.
    bool await(Moment moment) const {
        const auto begin = std::chrono::steady_clock::now();
        const auto which = static_cast<std::size_t>(moment);
        for (;;) {
            const auto now = entry();
            if (!now || (!now->hangs[which] &&
                         std::chrono::steady_clock::now() - begin >= now->delays[which]))
                return true;
            if (moment == Moment::first && isFlushing)
                return false;
            g_usleep(5000);
        }
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
    camera.await(Moment::open);
    const bool isTaken = entry->isExclusive && !exclusive.take(camera.device);
    camera.holdsDevice = entry->isExclusive && !isTaken;
    if (isTaken || entry->isBusy) {
        GST_ELEMENT_ERROR(self, RESOURCE, BUSY, ("Another program has the camera."), (nullptr));
        return false;
    }
    if (entry->failsToOpen) {
        GST_ELEMENT_ERROR(self, RESOURCE, OPEN_READ, ("The camera does not open."), (nullptr));
        return false;
    }
    camera.frames = 0;
    camera.hasChangedCaps = false;
    camera.note("opened");
    return true;
}

void giveBack(Camera& camera) {
    if (std::exchange(camera.holdsDevice, false))
        exclusive.giveBack(camera.device);
}

// The device is open from READY on, as with v4l2src.
GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
    auto& camera = cameraOf(element);
    for (auto entry = camera.entry(); entry && entry->hangsAlways; entry = camera.entry())
        g_usleep(5000);
    if (change == GST_STATE_CHANGE_NULL_TO_READY && !open(element)) {
        giveBack(camera);
        return GST_STATE_CHANGE_FAILURE;
    }
    const auto result =
        GST_ELEMENT_CLASS(kestrel_test_camera_source_parent_class)->change_state(element, change);
    if (change == GST_STATE_CHANGE_READY_TO_NULL) {
        camera.await(Moment::close);
        giveBack(camera);
        camera.note("closed " + std::to_string(camera.frames));
    }
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
    gst_caps_replace(&camera.caps, caps);
    camera.pictures.clear();
    camera.framesInFormat = 0;
    camera.show(*entry);
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

GstClockTime runningTime(GstElement* element) {
    GstClock* clock = gst_element_get_clock(element);
    if (!clock)
        return 0;
    const auto time = gst_clock_get_time(clock);
    const auto base = gst_element_get_base_time(element);
    gst_object_unref(clock);
    return time > base ? time - base : 0;
}

// Waits until the next frame is due and returns that time; frames that nobody took in time are left
// out. Not by the base class: a first frame that is late would make it wait as long for each one.
// None: the base class wants its thread back.
GstClockTime awaitNextTime(GstElement* element, Camera& camera) {
    const GstClockTime due = camera.nextTime;
    GstClockTime now = runningTime(element);
    const bool isOver = due == GST_CLOCK_TIME_NONE || due + 2 * camera.frameDuration < now;
    for (; !isOver && now < due; now = runningTime(element)) {
        if (camera.isFlushing)
            return GST_CLOCK_TIME_NONE;
        g_usleep(std::min<gulong>(5000, gulong(GST_TIME_AS_USECONDS(due - now)) + 1));
    }
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
        if (entry && entry->failsToStart) {
            GST_ELEMENT_ERROR(source, RESOURCE, FAILED, ("The camera does not start."), (nullptr));
            return GST_FLOW_ERROR;
        }
        if (!isGone && !(entry->stallAfter && camera.frames >= *entry->stallAfter)) {
            camera.show(*entry);
            return GST_FLOW_OK;
        }
        if (camera.isFlushing)
            return GST_FLOW_FLUSHING;
        g_usleep(5000);
    }
}

// Goes on in the next one of its formats, which nobody asked for.
void changeCaps(GstPushSrc* source, Camera& camera, const CameraEntry& entry) {
    camera.hasChangedCaps = true;
    GstCaps* all = entry.allCaps();
    for (guint index = 0; index < gst_caps_get_size(all); ++index) {
        GstCaps* one = gst_caps_copy_nth(all, index);
        const bool isOther = !gst_caps_can_intersect(one, camera.caps);
        if (isOther)
            gst_base_src_set_caps(GST_BASE_SRC(source), one);
        gst_caps_unref(one);
        if (isOther)
            break;
    }
    gst_caps_unref(all);
}

// Its memory is shared with the painted one.
void damage(GstBuffer* frame, Damage kind, bool isEncoded) {
    const gsize size = gst_buffer_get_size(frame);
    if (kind == Damage::truncated && isEncoded)
        gst_buffer_set_size(frame, gssize(size / 2));
    else if (kind == Damage::stride && !isEncoded)  // each row a sixteenth too short
        gst_buffer_set_size(frame, gssize(size - size / 16));
    else if (kind == Damage::empty)
        gst_buffer_set_size(frame, 0);
}

GstFlowReturn create(GstPushSrc* source, GstBuffer** buffer) {
    auto& camera = cameraOf(source);
    if (camera.framesInFormat == 0 && !camera.await(Moment::first))
        return GST_FLOW_FLUSHING;
    const GstClockTime time = awaitNextTime(GST_ELEMENT(source), camera);
    if (time == GST_CLOCK_TIME_NONE)
        return GST_FLOW_FLUSHING;
    if (const auto result = awaitFrame(source, camera); result != GST_FLOW_OK)
        return result;
    const auto entry = camera.entry();
    if (entry && entry->capsChange && camera.frames >= *entry->capsChange && !camera.hasChangedCaps)
        changeCaps(source, camera, *entry);
    if (camera.pictures.empty())
        return GST_FLOW_NOT_NEGOTIATED;
    GstBuffer* frame = gst_buffer_copy(camera.pictures[camera.next].get());
    if (!entry || !entry->isFrozen)
        camera.next = (camera.next + 1) % camera.pictures.size();
    if (entry)
        damage(frame, entry->damage,
               GST_VIDEO_INFO_FORMAT(&camera.format) == GST_VIDEO_FORMAT_ENCODED);
    GST_BUFFER_PTS(frame) = time;
    GST_BUFFER_DURATION(frame) = camera.frameDuration;
    GST_BUFFER_OFFSET(frame) = camera.frames++;
    ++camera.framesInFormat;
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
    GstCaps* caps = gst_caps_from_string("video/x-raw; image/jpeg; video/x-h264");
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    auto* base = GST_BASE_SRC_CLASS(type);
    base->get_caps = getCaps;
    base->set_caps = setCaps;
    base->unlock = [](GstBaseSrc* source) { return setFlushing(source, true); };
    base->unlock_stop = [](GstBaseSrc* source) { return setFlushing(source, false); };
    base->query = query;
    GST_PUSH_SRC_CLASS(type)->create = create;
}

}  // namespace

GType testCameraSourceType() {
    return kestrel_test_camera_source_get_type();
}

}  // namespace kestrelid::testcamera
