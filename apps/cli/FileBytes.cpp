#include "apps/cli/FileBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

namespace kestrelid::cli {
namespace {

BytesResult readAll(std::FILE* file, std::size_t maximum) {
    std::string bytes;
    while (bytes.size() <= maximum) {
        const std::size_t before = bytes.size();
        const std::size_t chunk = std::max<std::size_t>(64 * 1024, before);  // doubles
        bytes.resize(before + chunk);
        errno = 0;
        const std::size_t count = std::fread(bytes.data() + before, 1, chunk, file);
        bytes.resize(before + count);
        if (std::ferror(file) != 0)
            return ReadError{std::strerror(errno)};
        if (count < chunk && bytes.size() <= maximum)
            return bytes;
    }
    return ReadError{"larger than " + std::to_string(maximum / (1024 * 1024)) + " MiB"};
}

}  // namespace

BytesResult readFile(const std::filesystem::path& path, std::size_t maximum) {
    const auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rbe"), close);
    if (!file)
        return ReadError{std::strerror(errno)};
    return readAll(file.get(), maximum);
}

std::string startOfFile(const std::filesystem::path& path) {
    std::string start(16, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(file.gcount()));
    return start;
}

BytesResult readStandardInput(std::size_t maximum) {
    return readAll(stdin, maximum);
}

}  // namespace kestrelid::cli
