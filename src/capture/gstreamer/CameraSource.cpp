#include "capture/gstreamer/CameraSource.h"

namespace kestrelid::capture {

CameraSource::Assembled parsePipeline(const std::string& description) {
    GError* error = nullptr;
    ElementHandle pipeline = adopt(
        gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
    const ErrorHandle owner(error);
    if (!pipeline)
        return tl::unexpected(CaptureError{error ? error->message : "GStreamer makes no pipeline"});
    return pipeline;
}

}  // namespace kestrelid::capture
