#pragma once

#include <kestrelid/CameraOptions.h>

#include <filesystem>
#include <optional>

namespace kestrelid::capture {

// The file that stands for a camera, where options.camera is the path of one that exists; a pipe or
// a device node is none.
[[nodiscard]] std::optional<std::filesystem::path> cameraFile(const CameraOptions& options);

}  // namespace kestrelid::capture
