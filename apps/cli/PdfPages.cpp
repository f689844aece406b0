#include "apps/cli/PdfPages.h"

#include "apps/cli/ChildProcess.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <span>
#include <string>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kPatience{300};  // with a page, on a slow machine

std::variant<std::string, ImageError> outputOf(std::vector<std::string> command) {
    const std::string program = command.front();
    ProcessResult result = runProcess(command, kMaximumFileSize, kPatience);
    switch (result.end) {
    case ProcessResult::End::notStarted:
        if (result.status != ENOENT)
            return ImageError{program + " cannot be started: " + std::strerror(result.status)};
        return ImageError{"a PDF file; to read it, install " + program +
                          " (Debian package poppler-utils)"};
    case ProcessResult::End::tooLate:
        return ImageError{program + " took too long over it"};
    case ProcessResult::End::tooLarge:
        return ImageError{"a page of the PDF file is too large"};
    case ProcessResult::End::exited:
        break;
    }
    if (result.status == 0)
        return std::move(result.output);
    if (result.errors.find("Incorrect password") != std::string::npos)
        return ImageError{"the PDF file is encrypted: write a copy without a password"};
    const std::string first = result.errors.substr(0, result.errors.find('\n'));
    return ImageError{"the PDF file cannot be read" + (first.empty() ? "" : ": " + first)};
}

// As the programs take it: never as an option.
std::string fileArgument(const fs::path& path) {
    return path.is_absolute() ? path.native() : "./" + path.native();
}

}  // namespace

bool isPdf(std::string_view start) {
    return start.starts_with("%PDF-");
}

std::variant<int, ImageError> pdfPages(const fs::path& path) {
    auto output = outputOf({"pdfinfo", fileArgument(path)});
    if (auto* error = std::get_if<ImageError>(&output))
        return std::move(*error);
    constexpr std::string_view kKey = "\nPages:";
    const std::string text = "\n" + std::get<std::string>(output);
    std::size_t at = text.find(kKey);
    at = at == std::string::npos ? at : text.find_first_not_of(' ', at + kKey.size());
    int pages = 0;
    if (at != std::string::npos)
        std::from_chars(text.data() + at, text.data() + text.size(), pages);
    if (pages < 1)
        return ImageError{"the PDF file has no pages"};
    return pages;
}

ImageResult pdfPage(const fs::path& path, int page, int sufficientSide) {
    const std::string number = std::to_string(page);
    auto output = outputOf({"pdftoppm", "-png", "-f", number, "-l", number, "-scale-to",
                            std::to_string(sufficientSide), fileArgument(path)});
    if (auto* error = std::get_if<ImageError>(&output))
        return std::move(*error);
    return decodeImage(std::as_bytes(std::span(std::get<std::string>(output))));
}

}  // namespace kestrelid::cli
