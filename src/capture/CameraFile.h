#pragma once

#include <kestrelid/CameraOptions.h>

#include <filesystem>
#include <optional>

namespace kestrelid::capture {

// The file that stands for a camera: the path in options.camera if such a file exists. A pipe or a
// device node is no such file.
[[nodiscard]] std::optional<std::filesystem::path> cameraFile(const CameraOptions& options);

}  // namespace kestrelid::capture
