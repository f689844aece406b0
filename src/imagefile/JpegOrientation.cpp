#include "imagefile/JpegOrientation.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kestrelid::imagefile {

namespace {

constexpr std::array<std::uint8_t, 36> kApp1 = {
    0xff, 0xe1, 0,   34,                           // APP1 and its length without the marker
    'E',  'x',  'i', 'f', 0, 0,                    // EXIF's lead
    'M',  'M',  0,   42,  0, 0, 0, 8,              // TIFF, big-endian, directory at 8
    0,    1,                                       // one entry
    0x01, 0x12, 0,   3,   0, 0, 0, 1, 0, 0, 0, 0,  // Orientation, SHORT, 1, and its value
    0,    0,    0,   0,                            // no further directory
};
constexpr std::size_t kValueAt = 29;

std::size_t u8(std::byte byte) {
    return std::to_integer<std::size_t>(byte);
}

bool isExif(std::span<const std::byte> segment) {
    constexpr std::array kLead = {std::byte{'E'}, std::byte{'x'}, std::byte{'i'}, std::byte{'f'}};
    return u8(segment[1]) == 0xe1 && segment.size() >= 4 + kLead.size() &&
           std::equal(kLead.begin(), kLead.end(), segment.begin() + 4);
}

}  // namespace

std::vector<std::byte> withOrientation(std::span<const std::byte> jpeg, Orientation orientation) {
    const bool isJpeg = jpeg.size() >= 2 && u8(jpeg[0]) == 0xff && u8(jpeg[1]) == 0xd8;
    if (!isJpeg)
        return {jpeg.begin(), jpeg.end()};
    std::vector<std::byte> file;
    file.reserve(jpeg.size() + kApp1.size());
    file.insert(file.end(), jpeg.begin(), jpeg.begin() + 2);
    for (const std::uint8_t byte : kApp1)
        file.push_back(std::byte{byte});
    file[2 + kValueAt] = static_cast<std::byte>(orientation);

    // The application segments that follow, without EXIF.
    std::span<const std::byte> rest = jpeg.subspan(2);
    while (rest.size() >= 4 && u8(rest[0]) == 0xff && (u8(rest[1]) & 0xf0) == 0xe0) {
        const std::size_t length = 2 + (u8(rest[2]) << 8 | u8(rest[3]));
        if (length > rest.size())
            break;
        const auto segment = rest.first(length);
        if (!isExif(segment))
            file.insert(file.end(), segment.begin(), segment.end());
        rest = rest.subspan(length);
    }
    file.insert(file.end(), rest.begin(), rest.end());
    return file;
}

}  // namespace kestrelid::imagefile
