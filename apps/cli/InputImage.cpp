#include "apps/cli/InputImage.h"

#include "apps/cli/FileBytes.h"
#include "apps/cli/PdfPages.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <filesystem>
#include <span>
#include <system_error>
#include <utility>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

// Pixels that the longer side of a picture keeps at least when it is decoded. Enough for
// recognition, which scales text to lines of 48 pixels anyway, and a still of 12 megapixels takes
// little longer than a small one.
constexpr int kSufficientSide = 1920;

// Pipes, such as the shell's <(command), which only give their bytes once and in order.
bool isStream(const fs::path& path) {
    std::error_code error;
    const fs::file_type type = fs::status(path, error).type();
    return type == fs::file_type::fifo || type == fs::file_type::character;
}

ImageResult decoded(const BytesResult& bytes) {
    if (const auto* error = std::get_if<ReadError>(&bytes))
        return ImageError{error->cause};
    return decodeImage(std::as_bytes(std::span(std::get<std::string>(bytes))),
                       {.sufficientSide = kSufficientSide});
}

ImageResult read(const PictureInput& input) {
    if (const auto* unusable = std::get_if<UnusableInput>(&input.source))
        return ImageError{unusable->cause};
    const auto* path = std::get_if<fs::path>(&input.source);
    if (path == nullptr)
        return decoded(readStandardInput(kMaximumFileSize));
    std::error_code ignored;
    if (isStream(*path))
        return decoded(readFile(*path, kMaximumFileSize));
    if (fs::is_regular_file(*path, ignored) && isPdf(startOfFile(*path)))
        return pdfPage(*path, std::max(input.page, 1), kSufficientSide);
    return readImage(*path,
                     {.sufficientSide = kSufficientSide, .page = std::max(input.page - 1, 0)});
}

}  // namespace

std::variant<Image, std::string> inputImage(const PictureInput& input) {
    ImageResult result = read(input);
    if (auto* error = std::get_if<ImageError>(&result))
        return std::move(error->cause);
    return std::get<Image>(std::exchange(result, Image())).upright();
}

}  // namespace kestrelid::cli
