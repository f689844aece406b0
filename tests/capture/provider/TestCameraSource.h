#pragma once

#include <gst/gst.h>

namespace kestrelid::testcamera {

// The element kestreltestcamerasrc: the frames of one camera of the control file, live.
// Properties: control (the control file), device (the camera's name).
GType testCameraSourceType();

inline constexpr const char* kSourceName = "kestreltestcamerasrc";

}  // namespace kestrelid::testcamera
