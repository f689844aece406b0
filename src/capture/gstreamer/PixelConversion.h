#pragma once

#include "capture/gstreamer/GStreamerHandles.h"

#include <kestrelid/Bitmap.h>
#include <kestrelid/CaptureServices.h>

#include <optional>

namespace kestrelid::capture {

// A copy in BGRA8, scaled to size. Nothing if there is not enough memory, or if the format is
// unknown.
[[nodiscard]] std::optional<Bitmap> convertToBgra(const Bitmap& bitmap,
                                                  const PhotoDimensions& size);

// sample: of raw video.
[[nodiscard]] std::optional<Bitmap> convertToBgra(GstSample* sample, const PhotoDimensions& bound);

}  // namespace kestrelid::capture
