#pragma once

#include <gst/video/video.h>
#include <memory>
#include <string>
#include <vector>

namespace kestrelid::testcamera {

struct ReleaseBuffer {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using Buffers = std::vector<std::unique_ptr<GstBuffer, ReleaseBuffer>>;

// A few frames of a format: of a PNG or JPEG file, shown whole on black, or of colour bars that
// move. Empty where that fails.
Buffers paintFrames(const GstVideoInfo& format, const std::string& picture);

}  // namespace kestrelid::testcamera
