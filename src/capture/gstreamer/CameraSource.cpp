#include "capture/gstreamer/CameraSource.h"

#include "base/ExitGate.h"
#include "base/Failures.h"

namespace kestrelid::capture {

CameraSource::Assembled parsePipeline(const std::string& description) {
    const base::ExitGate::Pass pass;
    if (!pass)
        return tl::unexpected(CaptureError{base::kEnding});
    GError* error = nullptr;
    ElementHandle pipeline = adopt(
        gst_parse_launch_full(description.c_str(), nullptr, GST_PARSE_FLAG_FATAL_ERRORS, &error));
    const ErrorHandle owner(error);
    if (!pipeline)
        return tl::unexpected(CaptureError{error ? error->message : "GStreamer makes no pipeline"});
    return pipeline;
}

}  // namespace kestrelid::capture
