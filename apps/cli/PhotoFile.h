#pragma once

#include <kestrelid/Image.h>

#include <filesystem>
#include <optional>
#include <string>

namespace kestrelid::cli {

// Where a photo goes.
struct PhotoFile {
    std::filesystem::path path;
    bool mayReplace = false;  // a file that is there already
};

// Whether a picture can be written under this name: .jpg, .jpeg or .png, in either case.
[[nodiscard]] bool hasWritableExtension(const std::filesystem::path& path);

// Why a photo could not be written there now, found out without writing. One line, without the
// file's name.
[[nodiscard]] std::optional<std::string> photoObstacle(const PhotoFile& file);

// Writes the photo as it is shown. Unless it may, it replaces no file, not even one that has
// appeared since photoObstacle(). Why it failed, if so.
[[nodiscard]] std::optional<std::string> writePhoto(const PhotoFile& file, const Image& photo);

}  // namespace kestrelid::cli
