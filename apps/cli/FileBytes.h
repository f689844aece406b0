#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <variant>

namespace kestrelid::cli {

// Why a file could not be read: one line, without the file's name.
struct ReadError {
    std::string cause;
};

using BytesResult = std::variant<std::string, ReadError>;

// The whole of a file, also of a pipe, which the library never reads because it could block. An
// error if there are more than maximum bytes.
[[nodiscard]] BytesResult readFile(const std::filesystem::path& path, std::size_t maximum);

// The first bytes of a regular file: 16, or fewer where it is shorter or cannot be read.
[[nodiscard]] std::string startOfFile(const std::filesystem::path& path);

// The rest of standard input, likewise.
[[nodiscard]] BytesResult readStandardInput(std::size_t maximum);

}  // namespace kestrelid::cli
