#pragma once

#include <kestrelid/Image.h>

#include <filesystem>
#include <optional>
#include <string>

namespace kestrelid::cli {

// The file that a photo is written to.
struct PhotoFile {
    std::filesystem::path path;
    bool mayReplace = false;  // a file that is there already
};

// Whether a picture can be written under this name: .jpg, .jpeg or .png, in either case.
[[nodiscard]] bool hasWritableExtension(const std::filesystem::path& path);

// Returns why a photo could not be written there now, without writing. One line, without the file's
// name.
[[nodiscard]] std::optional<std::string> photoObstacle(const PhotoFile& file);

// Writes the photo as it is shown. Replaces no file unless it may, not even one that has appeared
// since photoObstacle(). Returns why it failed, if it did.
[[nodiscard]] std::optional<std::string> writePhoto(const PhotoFile& file, const Image& photo);

}  // namespace kestrelid::cli
