#include "imagefile/ExifOrientation.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace kestrelid::imagefile {
namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t kOrientationTag = 0x0112;

bool startsWith(std::span<const std::byte> bytes, std::string_view text) {
    return bytes.size() >= text.size() &&
           std::ranges::equal(bytes.first(text.size()), std::as_bytes(std::span(text)));
}

// The TIFF structure that an EXIF block is (TIFF 6.0, section 2). It needs no memory, so that a
// picture cannot lie otherwise because there is little of it.
class Tiff {
public:
    explicit Tiff(std::span<const std::byte> bytes)
        : bytes_(bytes), isBigEndian_(startsWith(bytes, "MM\0*"sv)) {}

    [[nodiscard]] bool isWhole() const { return isBigEndian_ || startsWith(bytes_, "II*\0"sv); }

    // A number of one to four bytes; 0 where the block has ended.
    [[nodiscard]] std::uint32_t at(std::size_t offset, std::size_t count) const {
        if (offset > bytes_.size() || count > bytes_.size() - offset)
            return 0;
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < count; ++i)
            number = number << 8 | std::to_integer<std::uint32_t>(
                                       bytes_[offset + (isBigEndian_ ? i : count - 1 - i)]);
        return number;
    }

private:
    std::span<const std::byte> bytes_;
    bool isBigEndian_;
};

// Bytes of a number by an entry's type: BYTE, SHORT and LONG; 0 for others.
std::size_t sizeOf(std::uint32_t type) {
    return type == 1 ? 1 : type == 3 ? 2 : type == 4 ? 4 : 0;
}

}  // namespace

Orientation orientationFromTag(int value) {
    return value >= 1 && value <= 8 ? static_cast<Orientation>(value) : Orientation::up;
}

Orientation exifOrientation(std::span<const std::byte> exif) {
    constexpr std::string_view kLead = "Exif\0\0"sv;
    constexpr std::size_t kEntry = 12;  // tag, type, count, value
    const Tiff block(startsWith(exif, kLead) ? exif.subspan(kLead.size()) : exif);
    if (!block.isWhole())
        return Orientation::up;
    const std::size_t directory = block.at(4, 4);
    const std::size_t entries = block.at(directory, 2);
    for (std::size_t entry = directory + 2; entry < directory + 2 + entries * kEntry;
         entry += kEntry) {
        if (block.at(entry, 2) == kOrientationTag && block.at(entry + 4, 4) == 1)
            return orientationFromTag(
                static_cast<int>(block.at(entry + 8, sizeOf(block.at(entry + 2, 2)))));
    }
    return Orientation::up;
}

}  // namespace kestrelid::imagefile
