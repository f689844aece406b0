#pragma once

#include <gst/gst.h>

namespace kestrelid::testcamera {

// Offers the cameras of the control file, which KESTRELID_TEST_CAMERA names, as Video/Source
// devices, and follows the file while it is started.
GType testCameraProviderType();

}  // namespace kestrelid::testcamera
