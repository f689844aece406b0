#pragma once

#include <kestrelid/ServiceStatus.h>

#include <string>
#include <vector>

namespace kestrelid::capture {

// Starts GStreamer on the first call; false if it cannot. Thread: any.
[[nodiscard]] bool startGStreamer();

// The plugins that capture needs, and GStreamer itself.
[[nodiscard]] std::vector<ServiceStatus> diagnoseGStreamer();

}  // namespace kestrelid::capture
