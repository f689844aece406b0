#include "apps/evaluate/EvaluationManifest.h"

#include "apps/cli/FileBytes.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace kestrelid::evaluation {
namespace {

using Quad = std::array<PixelPoint, 4>;

constexpr std::size_t kMaximumSize = 16u * 1024 * 1024;  // bytes

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> fields;
    for (std::size_t end = text.find(separator); end != text.npos; end = text.find(separator)) {
        fields.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    fields.push_back(text);
    return fields;
}

bool parseNumber(std::string_view text, double& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

std::optional<Quad> parseQuad(std::string_view text) {
    const std::vector<std::string_view> points = split(text, ';');
    Quad quad;
    if (points.size() != quad.size())
        return std::nullopt;
    for (std::size_t i = 0; i < quad.size(); ++i) {
        const std::vector<std::string_view> numbers = split(points[i], ',');
        if (numbers.size() != 2 || !parseNumber(numbers[0], quad[i].x) ||
            !parseNumber(numbers[1], quad[i].y))
            return std::nullopt;
    }
    return quad;
}

struct Columns {
    std::size_t file;
    std::size_t kind;
    std::optional<std::size_t> quad;
};

std::variant<Columns, ManifestError> parseHeader(std::string_view line, std::size_t number) {
    const std::vector<std::string_view> names = split(line, '\t');
    const auto file = std::find(names.begin(), names.end(), "file");
    const auto kind = std::find(names.begin(), names.end(), "kind");
    const auto quad = std::find_if(names.begin(), names.end(),
                                   [](std::string_view name) { return name.starts_with("quad"); });
    if (file == names.end() || kind == names.end())
        return ManifestError{number, "the header must name the columns 'file' and 'kind'"};
    Columns columns{static_cast<std::size_t>(file - names.begin()),
                    static_cast<std::size_t>(kind - names.begin()), std::nullopt};
    if (quad != names.end())
        columns.quad = static_cast<std::size_t>(quad - names.begin());
    return columns;
}

std::variant<LabelledPicture, ManifestError> parseRow(std::string_view line, std::size_t number,
                                                      const Columns& columns,
                                                      const std::filesystem::path& folder) {
    const std::vector<std::string_view> fields = split(line, '\t');
    const auto field = [&](std::size_t column) {
        return column < fields.size() ? fields[column] : std::string_view();
    };
    const std::string_view file = field(columns.file);
    const std::string_view kind = field(columns.kind);
    if (file.empty() || kind.empty())
        return ManifestError{number, file.empty() ? "no file" : "no kind"};
    LabelledPicture picture{folder / file, std::string(file), std::string(kind), {}};
    const std::string_view quad = columns.quad ? field(*columns.quad) : std::string_view();
    if (!quad.empty() && quad != "-") {
        picture.quad = parseQuad(quad);
        if (!picture.quad)
            return ManifestError{number, "the outline is not x,y;x,y;x,y;x,y"};
    }
    return picture;
}

}  // namespace

std::variant<std::vector<LabelledPicture>, ManifestError>
readManifest(const std::filesystem::path& path) {
    const cli::BytesResult bytes = cli::readFile(path, kMaximumSize);
    if (const auto* error = std::get_if<cli::ReadError>(&bytes))
        return ManifestError{0, error->cause};

    std::vector<LabelledPicture> pictures;
    std::optional<Columns> columns;
    std::size_t number = 0;
    for (std::string_view line : split(std::get<std::string>(bytes), '\n')) {
        ++number;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        if (line.empty() || line.front() == '#')
            continue;
        if (!columns) {
            auto header = parseHeader(line, number);
            if (auto* error = std::get_if<ManifestError>(&header))
                return std::move(*error);
            columns = std::get<Columns>(header);
            continue;
        }
        auto row = parseRow(line, number, *columns, path.parent_path());
        if (auto* error = std::get_if<ManifestError>(&row))
            return std::move(*error);
        pictures.push_back(std::get<LabelledPicture>(std::move(row)));
    }
    if (pictures.empty())
        return ManifestError{0, "names no pictures"};
    return pictures;
}

}  // namespace kestrelid::evaluation
