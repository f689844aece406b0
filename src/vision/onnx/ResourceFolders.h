#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::vision {

// What brings a model, and what the ONNX Runtime library.
inline constexpr std::string_view kModelRemedy =
    "install the package kestrelid-models, or take models/ of the source tree";
inline constexpr std::string_view kRuntimeRemedy =
    "install the package libkestrelid-detection0 or libonnxruntime-dev, or run tools/setup in the "
    "source tree";

// Folders searched in order; a file is taken from the first one that has it.
class ResourceFolders {
public:
    explicit ResourceFolders(std::vector<std::filesystem::path> folders);

    [[nodiscard]] std::optional<std::filesystem::path> find(std::string_view name) const;

    // What to tell a user who lacks the file: its name, where it was looked for, and the remedy.
    [[nodiscard]] std::string missing(std::string_view name,
                                      std::string_view remedy = kModelRemedy) const;

private:
    std::vector<std::filesystem::path> folders_;
};

}  // namespace kestrelid::vision
