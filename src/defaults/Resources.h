#pragma once

#include <filesystem>
#include <vector>

namespace kestrelid::defaults {

// Folders that may hold the models and the ONNX Runtime library, in the order in which they are
// searched. If the host chose a folder, that one alone. Otherwise the folder beside the library,
// and the one beside the libraries of a program, in an installed tree as in a build tree.
[[nodiscard]] std::vector<std::filesystem::path>
resourceFolders(const std::filesystem::path& chosen);

}  // namespace kestrelid::defaults
