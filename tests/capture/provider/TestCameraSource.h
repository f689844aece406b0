#pragma once

#include <gst/gst.h>

namespace kestrelid::testcamera {

// The element kestreltestcamerasrc: the frames of the camera that its property `device` names,
// live.
GType testCameraSourceType();

inline constexpr const char* kSourceName = "kestreltestcamerasrc";

}  // namespace kestrelid::testcamera
