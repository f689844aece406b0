#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace kestrelid::imagefile {

// The number of one to four bytes at an offset; the bytes are there.
[[nodiscard]] std::uint32_t numberAt(std::span<const std::byte> bytes, std::size_t offset,
                                     std::size_t count);

// The contents of the boxes at a path (ISO/IEC 14496-12, 4.2), {"meta", "iref"} for instance. As
// libheif does, boxes are read one after another up to the first that claims more than is there.
[[nodiscard]] std::vector<std::span<const std::byte>>
boxesAt(std::initializer_list<std::string_view> path, std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
