#pragma once

#include <cstdint>
#include <gst/gst.h>
#include <memory>
#include <string>
#include <vector>

namespace kestrelid::testcamera {

// What a sensor sees: nothing yet, what it has not focused on yet, or all.
enum class Sight : std::uint8_t { black, blurred, sharp };

struct ReleaseBuffer {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using Buffers = std::vector<std::unique_ptr<GstBuffer, ReleaseBuffer>>;

// A few frames in the format of caps, to be shown in turn from the first one on: of a PNG or JPEG
// file, shown whole on black, or of colour bars that move. Empty where that fails.
Buffers paintFrames(const GstCaps* caps, const std::string& picture, Sight sight);

}  // namespace kestrelid::testcamera
