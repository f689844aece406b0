#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kestrelid::evaluation {

struct PixelPoint {
    double x = 0.0;
    double y = 0.0;  // growing downwards
};

// One picture of the set, and what is known of it.
struct LabelledPicture {
    std::filesystem::path file;
    std::string name;  // as it stands in the manifest
    std::string kind;  // "passport-scan", "other-id", ...
    // Where the document lies in the upright picture at full size: top left, top right, bottom
    // right, bottom left.
    std::optional<std::array<PixelPoint, 4>> quad;

    [[nodiscard]] bool isPassport() const { return kind.starts_with("passport"); }
};

struct ManifestError {
    std::size_t line = 0;  // from 1; 0: the file as a whole
    std::string cause;
};

// Reads a table of tab-separated columns whose first line names them: file (relative to the
// manifest), kind and, where there is one, a column whose name begins with "quad"
// ("x,y;x,y;x,y;x,y", or - where nothing is known). Other columns, empty lines and lines that begin
// with # are passed over.
[[nodiscard]] std::variant<std::vector<LabelledPicture>, ManifestError>
readManifest(const std::filesystem::path& path);

}  // namespace kestrelid::evaluation
