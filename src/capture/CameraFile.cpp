#include "capture/CameraFile.h"

namespace kestrelid::capture {

std::optional<std::filesystem::path> cameraFile(const CameraOptions& options) {
    const std::filesystem::path path = options.camera;
    std::error_code error;
    if (path.empty() || !std::filesystem::is_regular_file(path, error))
        return std::nullopt;
    return path;
}

}  // namespace kestrelid::capture
