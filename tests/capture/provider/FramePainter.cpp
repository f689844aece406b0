#include "tests/capture/provider/FramePainter.h"

namespace kestrelid::testcamera {
namespace {

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

}  // namespace

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

}  // namespace kestrelid::testcamera
