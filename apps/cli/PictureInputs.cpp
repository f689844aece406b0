#include "apps/cli/PictureInputs.h"

#include "apps/cli/FileBytes.h"
#include "apps/cli/PdfPages.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <array>
#include <span>
#include <system_error>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

bool endsLikePicture(const fs::path& path) {
    static constexpr std::array<std::string_view, 12> kExtensions{".jpg",  ".jpeg", ".jpe", ".jfif",
                                                                  ".png",  ".webp", ".tif", ".tiff",
                                                                  ".heic", ".heif", ".hif", ".pdf"};
    std::string extension = path.extension().string();
    for (char& c : extension) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return std::ranges::find(kExtensions, extension) != kExtensions.end();
}

bool beginsLikePicture(const fs::path& path) {
    const std::string start = startOfFile(path);
    return isImageFormat(std::as_bytes(std::span(start))) || isPdf(start);
}

// Of a regular file.
std::variant<int, ImageError> pagesOf(const fs::path& path) {
    const std::string start = startOfFile(path);
    if (isPdf(start))
        return pdfPages(path);
    if (!start.starts_with("II") && !start.starts_with("MM"))
        return 1;
    const BytesResult bytes = readFile(path, kMaximumFileSize);
    const auto* file = std::get_if<std::string>(&bytes);
    return file == nullptr ? 1 : countPages(std::as_bytes(std::span(*file)));
}

void appendFile(const std::string& name, const fs::path& path, PictureInputs& inputs) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) {
        inputs.pictures.push_back({name, path});  // read once only, or there is nothing to read
        return;
    }
    const auto pages = pagesOf(path);
    if (const auto* error = std::get_if<ImageError>(&pages)) {
        inputs.pictures.push_back({name, UnusableInput{error->cause}});
        return;
    }
    const int count = std::get<int>(pages);
    for (int page = 1; page <= count; ++page)
        inputs.pictures.push_back({name, path, count > 1 ? page : 0});
}

void appendEntries(const fs::path& folder, PictureInputs& inputs) {
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    fs::directory_iterator next(folder, error);
    for (; !error && next != fs::directory_iterator(); next.increment(error))
        entries.push_back(*next);
    if (error)
        inputs.pictures.push_back(
            {folder.native(), UnusableInput{"cannot list the folder: " + error.message()}});
    std::ranges::sort(entries, {}, [](const fs::directory_entry& entry) {
        return entry.path().filename().native();
    });
    for (const fs::directory_entry& entry : entries) {
        const fs::path& path = entry.path();
        const fs::file_type type = entry.status(error).type();
        if (path.filename().native().front() == '.')
            ++inputs.hidden;
        else if (type == fs::file_type::directory && entry.is_symlink(error))
            ++inputs.linked;  // may lead back here
        else if (type == fs::file_type::directory)
            appendEntries(path, inputs);
        // A link that leads nowhere counts: the user sees it in the folder, and is told that it
        // cannot be read.
        else if ((type == fs::file_type::regular || type == fs::file_type::not_found) &&
                 (endsLikePicture(path) || beginsLikePicture(path)))
            appendFile(path.native(), path, inputs);
        else
            ++inputs.others;
    }
}

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
    return std::to_string(count) + " " + std::string(count == 1 ? one : many);
}

}  // namespace

std::string shownName(const PictureInput& input) {
    return input.page == 0 ? input.name : input.name + ", page " + std::to_string(input.page);
}

PictureInputs pictureInputs(const std::vector<std::string>& arguments) {
    PictureInputs inputs;
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (argument == kStandardInputName) {
            inputs.pictures.push_back({argument, StandardInput{}});
        } else if (fs::is_directory(argument, ignored)) {
            const std::size_t before = inputs.pictures.size();
            appendEntries(argument, inputs);
            if (inputs.pictures.size() == before)
                inputs.pictures.push_back({argument, UnusableInput{"no pictures in this folder"}});
        } else {
            appendFile(argument, argument, inputs);
        }
    }
    return inputs;
}

std::string passedOver(const PictureInputs& inputs) {
    std::string line;
    const auto add = [&](std::size_t count, std::string_view one, std::string_view many) {
        if (count > 0)
            line += (line.empty() ? "passed over " : ", ") + counted(count, one, many);
    };
    add(inputs.others, "file that is no picture", "files that are no pictures");
    add(inputs.hidden, "hidden entry", "hidden entries");
    add(inputs.linked, "link to a folder", "links to folders");
    return line;
}

}  // namespace kestrelid::cli
