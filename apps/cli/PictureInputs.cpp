#include "apps/cli/PictureInputs.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

bool hasPictureExtension(const fs::path& path) {
    static constexpr std::array<std::string_view, 8> kExtensions{".jpg", ".jpeg", ".png",  ".webp",
                                                                 ".tif", ".tiff", ".heic", ".heif"};
    std::string extension = path.extension().string();
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

// A link that leads nowhere counts: the user sees it in the folder, and is told that it cannot be
// read.
bool canBePicture(const fs::directory_entry& entry) {
    std::error_code error;
    const fs::file_type type = entry.status(error).type();
    const bool readable = type == fs::file_type::regular || type == fs::file_type::not_found;
    return readable && entry.path().filename().native().front() != '.' &&
           hasPictureExtension(entry.path());
}

void appendFolder(const std::string& name, std::vector<PictureInput>& inputs) {
    std::error_code error;
    std::vector<fs::path> pictures;
    fs::directory_iterator entries(name, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        if (canBePicture(*entries))
            pictures.push_back(entries->path());
    }
    if (error)
        inputs.push_back({name, UnusableInput{"cannot list the folder: " + error.message()}});
    else if (pictures.empty())
        inputs.push_back({name, UnusableInput{"no pictures in this folder"}});
    std::sort(pictures.begin(), pictures.end(), [](const fs::path& a, const fs::path& b) {
        return a.filename().native() < b.filename().native();
    });
    for (const fs::path& picture : pictures)
        inputs.push_back({picture.native(), picture});
}

}  // namespace

std::vector<PictureInput> pictureInputs(const std::vector<std::string>& arguments) {
    std::vector<PictureInput> inputs;
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (argument == kStandardInputName)
            inputs.push_back({argument, StandardInput{}});
        else if (fs::is_directory(argument, ignored))
            appendFolder(argument, inputs);
        else
            inputs.push_back({argument, fs::path(argument)});
    }
    return inputs;
}

}  // namespace kestrelid::cli
