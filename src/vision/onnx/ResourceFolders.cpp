#include "vision/onnx/ResourceFolders.h"

#include <system_error>
#include <utility>

namespace kestrelid::vision {

ResourceFolders::ResourceFolders(std::vector<std::filesystem::path> folders)
    : folders_(std::move(folders)) {}

std::optional<std::filesystem::path> ResourceFolders::find(std::string_view name) const {
    for (const auto& folder : folders_) {
        std::error_code unreadable;
        const auto path = folder / name;
        if (std::filesystem::is_regular_file(path, unreadable))
            return path;
    }
    return std::nullopt;
}

std::string ResourceFolders::missing(std::string_view name, std::string_view remedy) const {
    std::string places;
    for (const auto& folder : folders_)
        places += (places.empty() ? " in " : ", ") + folder.string();
    if (places.empty())
        places = " (no resource folder was given)";
    return std::string(name) + " was not found" + places + ": " + std::string(remedy);
}

}  // namespace kestrelid::vision
