#pragma once

#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CameraOptions.h>

#include <string>
#include <vector>

namespace kestrelid::capture {

// From the property api.libcamera.location; empty: unknown.
[[nodiscard]] CameraPosition positionFrom(const std::string& location);

// By its name, or because no format of it has colours.
[[nodiscard]] bool isInfrared(const std::string& name, const std::vector<VideoFormat>& formats);

// How well a camera suits for documents; smaller is better.
[[nodiscard]] int preferenceOf(CameraPosition position, bool isInfrared);

}  // namespace kestrelid::capture
