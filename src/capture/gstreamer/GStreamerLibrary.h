#pragma once

#include <kestrelid/ServiceStatus.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::capture {

// Starts GStreamer on the first call; false if it cannot. Thread: any.
[[nodiscard]] bool startGStreamer();

// The element that decodes the H.264 of cameras; nothing if none is installed.
[[nodiscard]] std::optional<std::string> h264Decoder();
inline constexpr const char* kNoH264Decoder =
    "it delivers H.264 alone, which needs gstreamer1.0-plugins-bad or gstreamer1.0-libav";

// The plugins that capture needs, and GStreamer itself.
[[nodiscard]] std::vector<ServiceStatus> diagnoseGStreamer();

}  // namespace kestrelid::capture
