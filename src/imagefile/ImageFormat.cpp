#include "imagefile/ImageFormat.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrelid::imagefile {
namespace {

using namespace std::string_view_literals;

bool standsAt(std::span<const std::byte> file, std::size_t offset, std::string_view text) {
    if (file.size() < offset + text.size())
        return false;
    return std::string_view(reinterpret_cast<const char*>(file.data()) + offset, text.size()) ==
           text;
}

// HEVC pictures: ISO/IEC 23008-12, B.4.1 and 10.2 (mif1
// and msf1 name no codec; libheif sees what they hold).
constexpr std::array kHeifBrands = {"heic"sv, "heix"sv, "heim"sv, "heis"sv, "hevc"sv,
                                    "hevx"sv, "hevm"sv, "hevs"sv, "mif1"sv, "msf1"sv};

struct OtherFormat {
    std::size_t offset;
    std::string_view bytes;
    const char* name;
    const char* article = "a ";
};

constexpr std::array kOtherFormats = {
    OtherFormat{0, "GIF8"sv, "GIF"},
    OtherFormat{0, "BM"sv, "BMP"},
    OtherFormat{0, "%PDF"sv, "PDF"},
    OtherFormat{4, "ftypavif"sv, "AVIF", "an "},
    OtherFormat{4, "ftyp"sv, "video"},
    OtherFormat{0, "\0\0\0\x0CjP  "sv, "JPEG 2000"},
    OtherFormat{0, "\0\0\0\x0CJXL "sv, "JPEG XL"},
    OtherFormat{0, "\xFF\x0A"sv, "JPEG XL"},
    OtherFormat{0, "<svg"sv, "SVG", "an "},
    OtherFormat{0, "<?xml"sv, "XML", "an "},
};

}  // namespace

ImageFormat imageFormatOf(std::span<const std::byte> file) noexcept {
    if (standsAt(file, 0, "\xFF\xD8\xFF"sv))
        return ImageFormat::jpeg;
    if (standsAt(file, 0, "\x89PNG\r\n\x1A\n"sv))
        return ImageFormat::png;
    if (standsAt(file, 0, "RIFF"sv) && standsAt(file, 8, "WEBP"sv))
        return ImageFormat::webp;
    // Classic and big TIFF, little and big endian.
    if (standsAt(file, 0, "II*\0"sv) || standsAt(file, 0, "MM\0*"sv) ||
        standsAt(file, 0, "II+\0"sv) || standsAt(file, 0, "MM\0+"sv))
        return ImageFormat::tiff;
    if (standsAt(file, 4, "ftyp"sv) &&
        std::ranges::any_of(kHeifBrands,
                            [&](std::string_view brand) { return standsAt(file, 8, brand); }))
        return ImageFormat::heif;
    return ImageFormat::unknown;
}

std::string unknownFormatCause(std::span<const std::byte> file) {
    if (file.empty())
        return "the file is empty";
    const auto other = std::ranges::find_if(kOtherFormats, [&](const OtherFormat& format) {
        return standsAt(file, format.offset, format.bytes);
    });
    const std::string found = other == kOtherFormats.end()
                                  ? "unknown format"
                                  : std::string(other->article) + other->name + " file";
    return found + "; JPEG, PNG, WebP, TIFF and HEIC pictures are read";
}

}  // namespace kestrelid::imagefile
