#include "imagefile/FileContents.h"

#include "base/OwnedDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>
#include <utility>

namespace kestrelid::imagefile {
namespace {

ImageError systemError(const char* action, int code) {
    return {std::string(action) + ": " + std::generic_category().message(code)};
}

std::optional<ImageError> checkReadable(const struct stat& status) {
    if (S_ISDIR(status.st_mode))
        return ImageError{"it is a directory"};
    if (!S_ISREG(status.st_mode))
        return ImageError{"it is not a regular file"};
    if (std::cmp_greater(status.st_size, kMaximumFileSize))
        return ImageError{"the file has " + std::to_string(status.st_size) + " bytes, at most " +
                          std::to_string(kMaximumFileSize) + " are read"};
    return std::nullopt;
}

bool writeAll(int file, std::span<const std::byte> contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(file, contents.data(), contents.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return false;
        contents = contents.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

// A different name for each call in each process. An unfinished file of an ended process may still
// have it.
std::filesystem::path temporaryBeside(const std::filesystem::path& path) {
    static std::atomic<unsigned> calls = 0;
    return path.parent_path() /
           (".kestrelid-" + std::to_string(::getpid()) + "-" + std::to_string(calls++) + ".tmp");
}

}  // namespace

FileBytes readRegularFile(const std::filesystem::path& path) {
    // Before opening, because opening a pipe releases the program that waits at its other end.
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return tl::unexpected(systemError("cannot be opened", errno));
    if (auto error = checkReadable(status))
        return tl::unexpected(*std::move(error));
    // Checked again after opening, because the name may belong to something else by now; opened
    // without blocking for the same reason.
    const base::OwnedDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0)
        return tl::unexpected(systemError("cannot be opened", errno));
    if (auto error = checkReadable(status))
        return tl::unexpected(*std::move(error));

    std::vector<std::byte> contents(static_cast<std::size_t>(status.st_size));
    std::size_t held = 0;
    while (held < contents.size()) {
        const ssize_t count = ::read(file.number(), contents.data() + held, contents.size() - held);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return tl::unexpected(systemError("cannot be read", errno));
        if (count == 0)
            break;
        held += static_cast<std::size_t>(count);
    }
    contents.resize(held);
    return contents;
}

std::optional<ImageError> replaceFile(const std::filesystem::path& path,
                                      std::span<const std::byte> contents) {
    const std::filesystem::path temporary = temporaryBeside(path);
    ::unlink(temporary.c_str());
    base::OwnedDescriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isOpen())
        return systemError("cannot be written", errno);
    // On disk before the rename: after a power failure the name must not stand for an empty file.
    if (!writeAll(file.number(), contents) || ::fsync(file.number()) != 0 || !file.close() ||
        std::rename(temporary.c_str(), path.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return systemError("cannot be written", code);
    }
    return std::nullopt;
}

}  // namespace kestrelid::imagefile
