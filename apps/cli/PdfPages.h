#pragma once

#include <kestrelid/ImageFile.h>

#include <filesystem>
#include <string_view>
#include <variant>

namespace kestrelid::cli {

// By a file's first bytes.
[[nodiscard]] bool isPdf(std::string_view start);

// How many pages a PDF has. PDFs are read by the programs of poppler, where they are installed;
// errors name the package.
[[nodiscard]] std::variant<int, ImageError> pdfPages(const std::filesystem::path& path);

// A page as a picture whose longer side has sufficientSide pixels. page: from 1.
[[nodiscard]] ImageResult pdfPage(const std::filesystem::path& path, int page, int sufficientSide);

}  // namespace kestrelid::cli
