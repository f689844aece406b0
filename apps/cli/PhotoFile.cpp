#include "apps/cli/PhotoFile.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExists = "exists already; --force replaces it";

// Takes the name by an empty file, which no other program can have made at the same time.
std::optional<std::string> reserve(const fs::path& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0)
        return errno == EEXIST ? kExists : std::strerror(errno);
    ::close(file);
    return std::nullopt;
}

}  // namespace

bool hasWritableExtension(const fs::path& path) {
    std::string extension = path.extension().string();
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return extension == ".jpg" || extension == ".jpeg" || extension == ".png";
}

std::optional<std::string> photoObstacle(const PhotoFile& file) {
    std::error_code ignored;
    const fs::file_status present = fs::symlink_status(file.path, ignored);
    if (fs::is_directory(present))
        return "is a folder";
    if (fs::exists(present) && !file.mayReplace)
        return kExists;
    const fs::path folder = file.path.has_parent_path() ? file.path.parent_path() : fs::path(".");
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "cannot write into its folder: " + std::string(std::strerror(errno));
    return std::nullopt;
}

std::optional<std::string> writePhoto(const PhotoFile& file, const Image& photo) {
    if (!file.mayReplace) {
        if (auto cause = reserve(file.path))
            return cause;
    }
    const std::optional<ImageError> error = writeImage(file.path, photo);
    if (!error)
        return std::nullopt;
    if (!file.mayReplace)
        ::unlink(file.path.c_str());
    return error->cause;
}

}  // namespace kestrelid::cli
