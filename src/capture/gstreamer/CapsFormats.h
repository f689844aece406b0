#pragma once

#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CaptureServices.h>

#include <vector>

namespace kestrelid::capture {

// What caps of a camera offer and capture can use, each size and rate once. Ranges are represented
// by their ends and by common values inside.
[[nodiscard]] std::vector<VideoFormat> formatsIn(const GstCaps* caps);

// Of the frames of these caps; 0x0 if they tell none.
[[nodiscard]] PhotoDimensions sizeIn(const GstCaps* caps);

// Whether frames of these caps have the size and encoding of format.
[[nodiscard]] bool isOf(const GstCaps* caps, const VideoFormat& format);

// For a capsfilter.
[[nodiscard]] CapsHandle capsFor(const VideoFormat& format);

}  // namespace kestrelid::capture
