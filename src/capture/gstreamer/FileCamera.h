#pragma once

#include "capture/gstreamer/GStreamerDevice.h"

#include <filesystem>

namespace kestrelid::capture {

// Opens a picture or video file as a camera; the error has the cause, without the file's name.
[[nodiscard]] OpenedSource openCameraFile(const std::filesystem::path& path) noexcept;

}  // namespace kestrelid::capture
