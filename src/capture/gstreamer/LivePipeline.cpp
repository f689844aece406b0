#include "capture/gstreamer/LivePipeline.h"

#include "base/Failures.h"
#include "capture/gstreamer/CapsFormats.h"

#include <gst/app/gstappsink.h>

#include <new>
#include <utility>
#include <vector>

namespace kestrelid::capture {

namespace {

ElementHandle elementOf(const ElementHandle& pipeline, const char* name) {
    return ElementHandle(gst_bin_get_by_name(GST_BIN(pipeline.get()), name));
}

// Throws std::bad_alloc.
Still copyOf(GstBuffer* buffer, GstCaps* caps, const VideoFormat& format) {
    if (format.encoding == Encoding::jpeg) {
        JpegStill still{.file = std::vector<std::byte>(gst_buffer_get_size(buffer)),
                        .size = {.width = format.width, .height = format.height}};
        gst_buffer_extract(buffer, 0, still.file.data(), still.file.size());
        return {.pixels = std::move(still)};
    }
    const BufferHandle copy(gst_buffer_copy_deep(buffer));
    if (!copy)
        throw std::bad_alloc();
    return {.pixels = SampleHandle(gst_sample_new(copy.get(), caps, nullptr, nullptr))};
}

PipelineFailure failureOf(GstMessage* message) try {
    const ErrorHandle error = errorOf(message);
    return {.isBusy = error && g_error_matches(error.get(), GST_RESOURCE_ERROR,
                                               GST_RESOURCE_ERROR_BUSY) != FALSE,
            .cause = error ? base::oneLine(error->message) : std::string()};
} catch (const std::bad_alloc&) {
    return {};
}

}  // namespace

struct LivePipeline::Callbacks {
    using Listener = std::weak_ptr<PipelineListener>;

    // Sees every message on the thread that posts it; none is kept.
    static GstBusSyncReply message(GstBus* /*bus*/, GstMessage* message, gpointer context) {
        if (const auto listener = static_cast<Listener*>(context)->lock()) {
            if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
                listener->pipelineFailed(failureOf(message));
            else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
                listener->pipelineEnded();
        }
        gst_message_unref(message);
        return GST_BUS_DROP;
    }

    static GstFlowReturn frame(GstAppSink* sink, gpointer context) {
        auto* self = static_cast<LivePipeline*>(context);
        const SampleHandle sample(gst_app_sink_pull_sample(sink));
        if (sample) {
            self->listener_->frameArrived();
            // A new sample, because the sink writes into one that it has already given away.
            if (!self->holdsFrames_)
                self->listener_->showFrame(SampleHandle(
                    gst_sample_new(gst_sample_get_buffer(sample.get()),
                                   gst_sample_get_caps(sample.get()), nullptr, nullptr)));
        }
        return GST_FLOW_OK;
    }

    static GstPadProbeReturn filtered(GstPad* pad, GstPadProbeInfo* info, gpointer context) {
        auto* self = static_cast<LivePipeline*>(context);
        self->takeStill(pad, gst_pad_probe_info_get_buffer(info));
        if (self->isFile_)
            return GST_PAD_PROBE_OK;  // its time is kept by the sink
        self->listener_->frameArrived();
        const bool shown = !self->holdsFrames_ && self->listener_->wantsFrames();
        return shown ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
    }
};

LivePipeline::LivePipeline(ElementHandle pipeline, bool isFile,
                           std::shared_ptr<PipelineListener> listener)
    : pipeline_(std::move(pipeline)), sink_(elementOf(pipeline_, kSinkName)),
      filter_(elementOf(pipeline_, kFilterName)), tap_(elementOf(pipeline_, kTapName)),
      isFile_(isFile), listener_(std::move(listener)) {
    const BusHandle bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(
        bus.get(), &Callbacks::message, new Callbacks::Listener(listener_),
        [](gpointer context) { delete static_cast<Callbacks::Listener*>(context); });
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = &Callbacks::frame;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink_.get()), &callbacks, this, nullptr);
    if (GstElement* tapped = tap_ ? tap_.get() : filter_.get()) {
        const PadHandle pad(gst_element_get_static_pad(tapped, "src"));
        gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, &Callbacks::filtered, this,
                          nullptr);
    }
}

LivePipeline::~LivePipeline() {
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    const BusHandle bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

bool LivePipeline::play() {
    return gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

bool LivePipeline::rewind() {
    return gst_element_seek_simple(
               pipeline_.get(), GST_FORMAT_TIME,
               static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_KEY_UNIT), 0) != FALSE;
}

void LivePipeline::switchTo(const VideoFormat& format) {
    const CapsHandle caps = capsFor(format);
    g_object_set(filter_.get(), "caps", caps.get(), nullptr);
}

void LivePipeline::armStill(const VideoFormat& format) {
    const std::lock_guard lock(stillMutex_);
    armed_ = format;
}

void LivePipeline::disarmStill() {
    const std::lock_guard lock(stillMutex_);
    armed_.reset();
}

void LivePipeline::takeStill(GstPad* pad, GstBuffer* buffer) noexcept try {
    std::optional<VideoFormat> wanted;
    CapsHandle caps;
    {
        const std::lock_guard lock(stillMutex_);
        if (!armed_ || GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED) ||
            gst_buffer_get_size(buffer) == 0)
            return;
        VideoFormat format = *armed_;
        if (tap_)
            format.encoding = Encoding::raw;
        caps.reset(gst_pad_get_current_caps(pad));
        if (!isOf(caps.get(), format))
            return;
        armed_.reset();
        wanted = std::move(format);
    }
    // Copied, because a driver cannot change its format while one of its buffers is held.
    listener_->stillTaken(copyOf(buffer, caps.get(), *wanted));
} catch (const std::bad_alloc&) {
    // A still less; who waits for it does so no longer than usual.
}

}  // namespace kestrelid::capture
