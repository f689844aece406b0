#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::vision {

inline constexpr std::string_view kResourceRemedy = "run tools/setup";

// Folders searched in order; a file is taken from the first one that has it.
class ResourceFolders {
public:
    explicit ResourceFolders(std::vector<std::filesystem::path> folders);

    [[nodiscard]] std::optional<std::filesystem::path> find(std::string_view name) const;

    // What to tell a user who lacks the file: its name, where it was looked for, and the remedy.
    [[nodiscard]] std::string missing(std::string_view name,
                                      std::string_view remedy = kResourceRemedy) const;

private:
    std::vector<std::filesystem::path> folders_;
};

}  // namespace kestrelid::vision
