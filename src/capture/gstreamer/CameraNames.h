#pragma once

#include "capture/gstreamer/GStreamerInput.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::capture {

// A camera as a provider of GStreamer announces it.
struct AnnouncedCamera {
    std::string name;
    std::string node;      // path of its device node; empty: unknown
    std::string provider;  // "v4l2deviceprovider"
};

struct NamedCamera {
    std::size_t index = 0;  // among those announced
    std::string name;       // of this camera alone
};

// Each camera once, although several providers may announce it; a name that came before gets a
// number.
[[nodiscard]] std::vector<NamedCamera> nameCameras(const std::vector<AnnouncedCamera>& announced);

// From the properties api.libcamera.location and api.libcamera.rotation; empty: unknown.
[[nodiscard]] Mounting mountingFrom(const std::string& location, const std::string& rotation);

}  // namespace kestrelid::capture
