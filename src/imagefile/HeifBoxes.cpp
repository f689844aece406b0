#include "imagefile/HeifBoxes.h"

#include <algorithm>
#include <utility>

namespace kestrelid::imagefile {
namespace {

using Bytes = std::span<const std::byte>;

// Adds the contents of all boxes of a name in a sequence of boxes.
void addBoxes(std::string_view name, Bytes row, std::vector<Bytes>& found) {
    constexpr std::size_t kHeader = 8;  // size and name
    constexpr std::size_t kLongHeader = 16;
    const auto wanted = std::as_bytes(std::span(name));
    while (row.size() >= kHeader) {
        std::size_t header = kHeader;
        std::size_t size = numberAt(row, 0, 4);
        if (size == 0) {  // to the end
            size = row.size();
        } else if (size == 1 && row.size() >= kLongHeader) {  // its size follows the name
            header = kLongHeader;
            size = std::size_t{numberAt(row, 8, 4)} << 32 | numberAt(row, 12, 4);
        }
        if (name == "meta")
            header += 4;  // version and flags, before the boxes in it
        if (size < kHeader || size > row.size())
            return;
        if (size >= header && std::ranges::equal(row.subspan(4, wanted.size()), wanted))
            found.push_back(row.first(size).subspan(header));
        row = row.subspan(size);
    }
}

}  // namespace

std::uint32_t numberAt(Bytes bytes, std::size_t offset, std::size_t count) {
    std::uint32_t number = 0;
    for (const std::byte byte : bytes.subspan(offset, count))
        number = number << 8 | std::to_integer<std::uint32_t>(byte);
    return number;
}

std::vector<Bytes> boxesAt(std::initializer_list<std::string_view> path, Bytes file) {
    std::vector<Bytes> found = {file};
    for (const std::string_view name : path) {
        std::vector<Bytes> inside;
        for (const Bytes row : found)
            addBoxes(name, row, inside);
        found = std::move(inside);
    }
    return found;
}

}  // namespace kestrelid::imagefile
