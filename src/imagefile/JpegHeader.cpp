#include "imagefile/JpegHeader.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrelid::imagefile {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::byte>;

constexpr int kStartOfScan = 0xDA;
constexpr int kEndOfImage = 0xD9;
constexpr int kApp1 = 0xE1;
constexpr int kApp14 = 0xEE;

int byteAt(Bytes bytes, std::size_t offset) {
    return std::to_integer<int>(bytes[offset]);
}
int shortAt(Bytes bytes, std::size_t offset) {
    return byteAt(bytes, offset) << 8 | byteAt(bytes, offset + 1);
}

bool startsWith(Bytes bytes, std::string_view text) {
    return bytes.size() >= text.size() &&
           std::string_view(reinterpret_cast<const char*>(bytes.data()), text.size()) == text;
}

bool standsAlone(int marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

bool isStartOfFrame(int marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Progressive Huffman, progressive arithmetic.
bool isProgressive(int marker) {
    return marker == 0xC2 || marker == 0xCA;
}

// Samples of all components, padded to whole blocks of the largest, as two bytes each.
std::int64_t coefficientBytesOf(Bytes frame, const JpegHeader& header) {
    constexpr std::int64_t kBlockBytes = 64 * 2;
    int widest = 1;
    int highest = 1;
    std::int64_t blocksPerUnit = 0;
    for (int component = 0; component < header.components; ++component) {
        const int sampling = byteAt(frame, static_cast<std::size_t>(6 + 3 * component + 1));
        widest = std::max(widest, sampling >> 4);
        highest = std::max(highest, sampling & 15);
        blocksPerUnit += (sampling >> 4) * (sampling & 15);
    }
    const auto units = [](int side, int sampling) {
        return (side + 8 * sampling - 1) / (8 * sampling);
    };
    return std::int64_t{units(header.width, widest)} * units(header.height, highest) *
           blocksPerUnit * kBlockBytes;
}

}  // namespace

bool endsEarly(const JpegHeader& header) {
    constexpr std::array kEnd = {std::byte{0xFF}, std::byte{kEndOfImage}};
    return std::search(header.scans.begin(), header.scans.end(), kEnd.begin(), kEnd.end()) ==
           header.scans.end();
}

std::optional<JpegHeader> parseJpegHeader(Bytes file) {
    JpegHeader header;
    std::int64_t coefficients = 0;
    bool progressive = false;
    std::size_t at = 0;
    while (true) {
        // libjpeg steps over stray bytes and fill bytes between segments, too.
        while (at < file.size() && byteAt(file, at) != 0xFF)
            ++at;
        while (at < file.size() && byteAt(file, at) == 0xFF)
            ++at;
        if (at >= file.size())
            return std::nullopt;
        const int marker = byteAt(file, at++);
        if (marker == 0 || standsAlone(marker))
            continue;
        if (marker == kEndOfImage || file.size() - at < 2)
            return std::nullopt;
        const auto length = static_cast<std::size_t>(shortAt(file, at));
        if (length < 2 || length > file.size() - at)
            return std::nullopt;
        const Bytes segment = file.subspan(at + 2, length - 2);
        at += length;

        if (isStartOfFrame(marker)) {
            if (segment.size() < 6 ||
                segment.size() < static_cast<std::size_t>(6 + 3 * byteAt(segment, 5)))
                return std::nullopt;
            header.height = shortAt(segment, 1);
            header.width = shortAt(segment, 3);
            header.components = byteAt(segment, 5);
            coefficients = coefficientBytesOf(segment, header);
            progressive = isProgressive(marker);
        } else if (marker == kApp1 && header.exif.empty() && startsWith(segment, "Exif\0\0"sv)) {
            header.exif = segment;
        } else if (marker == kApp14 && startsWith(segment, "Adobe"sv)) {
            header.hasAdobeMarker = true;
        } else if (marker == kStartOfScan) {
            if (header.components == 0 || segment.empty())
                return std::nullopt;
            if (progressive || byteAt(segment, 0) < header.components)
                header.coefficientBytes = coefficients;
            header.scans = file.subspan(at - length);
            return header;
        }
    }
}

}  // namespace kestrelid::imagefile
