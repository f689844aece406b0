#pragma once

#include "base/OwnedDescriptor.h"

#include <functional>

namespace kestrelid::capture {

// Opens a connection to PipeWire that shows the cameras this program may use. The descriptor is
// closed if the desktop refuses or there is no PipeWire. Takes up to a second. Thread: any.
using OpenCameraRemote = std::function<base::OwnedDescriptor()>;

}  // namespace kestrelid::capture
