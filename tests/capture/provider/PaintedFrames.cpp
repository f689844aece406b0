#include "tests/capture/provider/PaintedFrames.h"

#include <algorithm>
#include <gst/video/video.h>

namespace kestrelid::testcamera {
namespace {

std::string textOf(const GstVideoInfo& raw) {
    GstCaps* caps = gst_video_info_to_caps(&raw);
    gchar* text = gst_caps_to_string(caps);
    const std::string copy = text;
    g_free(text);
    gst_caps_unref(caps);
    return copy;
}

std::string drawing(const std::string& picture, Sight sight, int frames) {
    const std::string number = " num-buffers=" + std::to_string(frames);
    if (sight == Sight::black)
        return "videotestsrc pattern=black" + number;
    if (picture.empty())
        return "videotestsrc horizontal-speed=16" + number;
    return "filesrc location=\"" + picture + "\" ! decodebin ! videoconvert ! imagefreeze" + number;
}

// Reduced to a sixteenth, which is enlarged again afterwards.
std::string lowPass(const GstVideoInfo& format) {
    const auto reduced = [](int length) { return std::to_string(std::max(2, length / 16)); };
    return " ! videoconvert ! videoscale add-borders=true ! video/x-raw,pixel-aspect-ratio=1/1" +
           (",width=" + reduced(format.width)) + ",height=" + reduced(format.height);
}

}  // namespace

Buffers paintFrames(const GstCaps* caps, const std::string& picture, Sight sight) {
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    const bool isJpeg = gst_structure_has_name(structure, "image/jpeg");
    const bool isH264 = gst_structure_has_name(structure, "video/x-h264");
    GstVideoInfo raw;
    if (!gst_video_info_from_caps(&raw, caps))
        return {};
    if (isJpeg || isH264) {
        gst_video_info_set_format(&raw, GST_VIDEO_FORMAT_I420, guint(raw.width), guint(raw.height));
        if (isJpeg)
            gst_video_colorimetry_from_string(&raw.colorimetry, "1:4:0:0");  // as JFIF has it
    }
    raw.fps_n = 30;
    raw.fps_d = 1;
    std::string line = drawing(picture, sight, isH264 ? 12 : 4);
    if (sight == Sight::blurred)
        line += lowPass(raw);
    line += " ! videoconvert ! videoscale add-borders=true ! " + textOf(raw);
    if (isJpeg)
        line += " ! jpegenc";
    if (isH264)  // one group of pictures, whose first one carries what a decoder needs to begin
        line += " ! openh264enc gop-size=12 complexity=low ! h264parse config-interval=-1 ! "
                "video/x-h264,stream-format=byte-stream,alignment=au";
    GstElement* pipeline =
        gst_parse_launch((line + " ! appsink name=sink sync=false").c_str(), nullptr);
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
