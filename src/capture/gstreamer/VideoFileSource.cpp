#include "capture/gstreamer/VideoFileSource.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <utility>

namespace kestrelid::capture {

namespace {

constexpr const char* kSourceName = "source";
constexpr GstClockTime kOpeningTime = 3 * GST_SECOND;

// Sound and subtitles are left alone. The filter keeps frames in plain memory.
const std::string kDecoder =
    std::string("uridecodebin name=") + kSourceName +
    " expose-all-streams=false caps=video/x-raw ! capsfilter name=" + kFilterName +
    " caps=video/x-raw";

void setUri(GstElement* pipeline, const std::string& uri) {
    const ElementHandle source(gst_bin_get_by_name(GST_BIN(pipeline), kSourceName));
    g_object_set(source.get(), "uri", uri.c_str(), nullptr);
}

// The first error of a pipeline that was asked for its first frame, or what else went wrong.
std::string causeOf(GstElement* pipeline) {
    const BusHandle bus(gst_element_get_bus(pipeline));
    const MessageHandle message(gst_bus_pop_filtered(
        bus.get(), static_cast<GstMessageType>(GST_MESSAGE_ERROR | GST_MESSAGE_EOS)));
    if (!message)
        return "no picture within " + std::to_string(kOpeningTime / GST_SECOND) + " s";
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS)
        return "no picture in it";
    const ErrorHandle error = errorOf(message.get());
    return error ? error->message : "unknown error";
}

// The format of the first frame.
tl::expected<VideoFormat, CaptureError> probe(GstElement* pipeline) {
    const ElementHandle sink(gst_bin_get_by_name(GST_BIN(pipeline), kSinkName));
    gst_element_set_state(pipeline, GST_STATE_PAUSED);
    const auto change = gst_element_get_state(pipeline, nullptr, nullptr, kOpeningTime);
    SampleHandle first;
    if (change == GST_STATE_CHANGE_SUCCESS)
        first.reset(gst_app_sink_try_pull_preroll(GST_APP_SINK(sink.get()), 0));
    GstVideoInfo info;
    if (!first || !gst_video_info_from_caps(&info, gst_sample_get_caps(first.get())))
        return tl::unexpected(CaptureError{"it cannot be played as a video: " + causeOf(pipeline)});
    return VideoFormat{.width = GST_VIDEO_INFO_WIDTH(&info),
                       .height = GST_VIDEO_INFO_HEIGHT(&info),
                       .rate = {.numerator = GST_VIDEO_INFO_FPS_N(&info),
                                .denominator = std::max(1, GST_VIDEO_INFO_FPS_D(&info))},
                       .encoding = Encoding::raw,
                       .layout = GST_VIDEO_INFO_NAME(&info)};
}

}  // namespace

OpenedSource VideoFileSource::open(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    const TextHandle uri(error ? nullptr : gst_filename_to_uri(absolute.c_str(), nullptr));
    if (!uri)
        return tl::unexpected(CaptureError{"the path cannot be used"});
    const Assembled pipeline =
        parsePipeline(kDecoder + " ! appsink sync=false name=" + std::string(kSinkName));
    if (!pipeline)
        return tl::unexpected(pipeline.error());
    setUri(pipeline->get(), uri.get());
    const auto format = probe(pipeline->get());
    gst_element_set_state(pipeline->get(), GST_STATE_NULL);
    if (!format)
        return tl::unexpected(format.error());
    return std::make_shared<const VideoFileSource>(uri.get(), *format);
}

VideoFileSource::VideoFileSource(std::string uri, VideoFormat format)
    : uri_(std::move(uri)), formats_{std::move(format)} {}

CameraSource::Assembled VideoFileSource::assemble(const VideoFormat& /*format*/) const {
    Assembled assembled = parsePipeline(kDecoder + " ! appsink name=" + kSinkName +
                                        " sync=true max-buffers=1 drop=true");
    if (assembled)
        setUri(assembled->get(), uri_);
    return assembled;
}

}  // namespace kestrelid::capture
