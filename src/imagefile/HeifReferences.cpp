#include "imagefile/HeifReferences.h"

#include "imagefile/DecodingLimits.h"
#include "imagefile/HeifBoxes.h"

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kestrelid::imagefile {
namespace {

using Bytes = std::span<const std::byte>;
using Item = std::uint32_t;

// Items, and those that are decoded for them.
using Parts = std::map<Item, std::vector<Item>>;

constexpr std::uint32_t kDerivedImage = 0x64696D67;  // "dimg": a picture and its parts
constexpr std::uint32_t kAuxiliary = 0x6175786C;     // "auxl": an alpha plane and its picture
constexpr std::uint32_t kLongType = 0x75756964;      // "uuid": the type is in 16 further bytes
constexpr int kMaximumSteps = 6;  // overlay, rotated picture, grid, tile, and alpha between them
constexpr std::uint64_t kMaximumPictures = 4096;  // a grid of 100 megapixels has 400 tiles of 512
// Of the whole file, which may hold many pictures.
constexpr std::size_t kMaximumReferences = 65'536;

// Nothing if the box is damaged.
std::optional<Parts> partsIn(Bytes box) {
    constexpr std::size_t kVersionAndFlags = 4;
    constexpr std::size_t kHeader = 8;  // size and name of one reference
    constexpr std::size_t kCount = 2;
    if (box.size() < kVersionAndFlags)
        return std::nullopt;
    const std::size_t itemBytes = numberAt(box, 0, 1) == 0 ? 2 : 4;
    const std::size_t fixed = kHeader + itemBytes + kCount;
    Parts parts;
    for (box = box.subspan(kVersionAndFlags); !box.empty();) {
        const std::size_t size = box.size() < fixed ? 0 : numberAt(box, 0, 4);
        if (size < fixed || size > box.size())
            return std::nullopt;
        const std::uint32_t type = numberAt(box, 4, 4);
        const Item from = numberAt(box, kHeader, itemBytes);
        const std::size_t count = numberAt(box, kHeader + itemBytes, kCount);
        // libheif goes by the count, whatever the size says, and
        // elsewhere for a long type, which no reference has.
        if (size != fixed + count * itemBytes || type == kLongType)
            return std::nullopt;
        for (std::size_t offset = fixed; offset < size; offset += itemBytes) {
            const Item to = numberAt(box, offset, itemBytes);
            if (type == kDerivedImage)
                parts[from].push_back(to);
            else if (type == kAuxiliary)
                parts[to].push_back(from);
        }
        box = box.subspan(size);
    }
    return parts;
}

// Whether every item is whole after kMaximumSteps and kMaximumPictures.
bool comeToAnEnd(const Parts& parts) {
    std::size_t references = 0;
    for (const auto& [item, its] : parts)
        references += its.size();
    if (references > kMaximumReferences)
        return false;
    // How many pictures an item takes, seen some steps deep; one more with every round.
    std::map<Item, std::uint64_t> pictures;
    for (int step = 0; step <= kMaximumSteps; ++step) {
        std::map<Item, std::uint64_t> deeper;
        for (const auto& [item, its] : parts) {
            std::uint64_t& count = deeper[item] = 1;
            for (const Item part : its) {
                const auto known = pictures.find(part);
                count += known == pictures.end() ? 1 : known->second;
            }
            if (count > kMaximumPictures)
                return false;
        }
        if (deeper == pictures)
            return true;
        pictures = std::move(deeper);
    }
    return false;
}

}  // namespace

std::optional<ImageError> checkHeifReferences(Bytes file) {
    for (const Bytes box : boxesAt({"meta", "iref"}, file)) {
        const auto parts = partsIn(box);
        if (!parts)
            return decodingError(Fault::damaged, "HEIC", "its item references make no sense");
        if (!comeToAnEnd(*parts))
            return decodingError(Fault::damaged, "HEIC",
                                 "its pictures refer to each other too often or without end");
    }
    return std::nullopt;
}

}  // namespace kestrelid::imagefile
