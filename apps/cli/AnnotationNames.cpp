#include "apps/cli/AnnotationNames.h"

#include <set>
#include <string>
#include <system_error>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

// The folder is resolved, the last part is not: writing replaces a link, not the file it leads to.
fs::path entryOf(const fs::path& path) {
    std::error_code error;
    const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const fs::path resolved = fs::weakly_canonical(parent, error);
    return (error ? parent : resolved) / path.filename();
}

std::set<fs::path> takenByInputs(const std::vector<PictureInput>& inputs) {
    std::set<fs::path> taken;
    for (const PictureInput& input : inputs) {
        if (const auto* path = std::get_if<fs::path>(&input.source)) {
            taken.insert(entryOf(*path));
            std::error_code error;
            fs::path target = fs::canonical(*path, error);
            if (!error)
                taken.insert(std::move(target));
        }
    }
    return taken;
}

struct NameParts {
    std::string stem;
    std::string extension;
};

NameParts partsFor(const PictureInput& input) {
    const auto* path = std::get_if<fs::path>(&input.source);
    if (path == nullptr)
        return {"stdin", ".jpg"};
    const std::string stem = path->stem().native();
    const std::string extension = path->extension().native();
    const bool png = extension == ".png" || extension == ".PNG";
    // A path that ends in a slash has no name of its own; "." and ".." would leave the folder.
    const bool usable = !stem.empty() && stem != "." && stem != "..";
    return {usable ? stem : "picture", png ? ".png" : ".jpg"};
}

}  // namespace

std::vector<fs::path> annotationPaths(const fs::path& folder,
                                      const std::vector<PictureInput>& inputs) {
    std::set<fs::path> taken = takenByInputs(inputs);
    std::vector<fs::path> paths;
    paths.reserve(inputs.size());
    for (const PictureInput& input : inputs) {
        const NameParts parts = partsFor(input);
        fs::path path = folder / (parts.stem + parts.extension);
        for (int number = 2; !taken.insert(entryOf(path)).second; ++number)
            path = folder / (parts.stem + "-" + std::to_string(number) + parts.extension);
        paths.push_back(std::move(path));
    }
    return paths;
}

}  // namespace kestrelid::cli
