#pragma once

#include <filesystem>
#include <vector>

namespace kestrelid::defaults {

// Folders that may hold the models and the ONNX Runtime library, in the order in which they are
// searched: the host's choice alone where it made one; otherwise beside the library, and where a
// program finds its libraries, as both lie in an installed tree and in a build tree.
[[nodiscard]] std::vector<std::filesystem::path>
resourceFolders(const std::filesystem::path& chosen);

}  // namespace kestrelid::defaults
