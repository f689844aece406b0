#pragma once

#include <filesystem>
#include <vector>

namespace kestrelid {

// Folders that may hold the models and the ONNX Runtime library, in the order in which they are
// searched: the host's choice alone where it made one; otherwise where the library is installed,
// then where it was built.
[[nodiscard]] std::vector<std::filesystem::path>
resourceFolders(const std::filesystem::path& chosen);

}  // namespace kestrelid
