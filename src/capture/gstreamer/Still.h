#pragma once

#include "capture/gstreamer/GStreamerHandles.h"

#include <kestrelid/CaptureServices.h>

#include <cstddef>
#include <variant>
#include <vector>

namespace kestrelid::capture {

// A picture of motion JPEG as the camera gave it.
struct JpegStill {
    std::vector<std::byte> file;
    PhotoDimensions size;
};

// A still before it is a photo: a camera's raw sample or JPEG, or a picture.
struct Still {
    std::variant<SampleHandle, JpegStill, Bitmap> pixels;
    Orientation orientation = Orientation::up;
};

}  // namespace kestrelid::capture
