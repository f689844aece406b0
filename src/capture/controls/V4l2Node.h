#pragma once

#include "capture/controls/ControlNode.h"

namespace kestrelid::capture {

// The node, and the flash lights of the same media device.
[[nodiscard]] ControlNodes openV4l2Nodes(const std::string& path);

}  // namespace kestrelid::capture
