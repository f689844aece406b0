#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// What tests look for and change in the bytes of a picture file.
namespace kestrelid::imagefile {

using Bytes = std::vector<std::byte>;

// A file of data/, which its README describes.
[[nodiscard]] Bytes pictureFile(const char* name);

inline Bytes bytesOf(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
    return {bytes, bytes + text.size()};
}

// Behind the first place of text.
inline std::size_t placeOf(const Bytes& file, std::string_view text) {
    const std::string_view whole(reinterpret_cast<const char*>(file.data()), file.size());
    const std::size_t place = whole.find(text);
    EXPECT_NE(place, std::string_view::npos) << text;
    return place + text.size();
}

inline void writeNumber(Bytes& file, std::size_t at, std::uint32_t value, int bytes,
                        bool bigEndian) {
    for (int i = 0; i < bytes; ++i)
        file.at(at + i) =
            static_cast<std::byte>(value >> 8 * (bigEndian ? bytes - 1 - i : i) & 255);
}

}  // namespace kestrelid::imagefile
