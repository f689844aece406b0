#pragma once

#include "capture/gstreamer/GStreamerHandles.h"

#include <kestrelid/Bitmap.h>

#include <optional>

namespace kestrelid::capture {

// The pixels of a sample in BGRA or BGRx, without copying: the bitmap holds the sample. Nothing if
// it is something else.
[[nodiscard]] std::optional<Bitmap> mapFrame(SampleHandle sample);

}  // namespace kestrelid::capture
