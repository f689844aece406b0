#pragma once

#include "capture/gstreamer/GStreamerHandles.h"
#include "imagefile/FileContents.h"

#include <kestrelid/CaptureServices.h>

#include <variant>

namespace kestrelid::capture {

// A still before it is a file: a camera's own sample, of raw video or JPEG, or a picture.
struct Still {
    std::variant<SampleHandle, Bitmap> pixels;
    Orientation orientation = Orientation::up;
};

// The file that settings ask for; a camera's own JPEG is kept as it is if it fits. Takes up to a
// few tenths of a second.
[[nodiscard]] imagefile::FileBytes encodePhoto(const Still& still,
                                               const PhotoSettings& settings) noexcept;

}  // namespace kestrelid::capture
