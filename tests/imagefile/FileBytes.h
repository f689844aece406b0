#pragma once

#include "tests/imagefile/EncodedPictures.h"

#include <gtest/gtest.h>

#include <string_view>

// What tests look for and change in the bytes of a picture file.
namespace kestrelid::imagefile {

inline Bytes bytesOf(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::byte*>(text.data());
    return {bytes, bytes + text.size()};
}

inline void append(Bytes& to, const Bytes& from) {
    to.insert(to.end(), from.begin(), from.end());
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

inline void appendNumber(Bytes& to, std::uint32_t value, int bytes, bool bigEndian) {
    to.resize(to.size() + static_cast<std::size_t>(bytes));
    writeNumber(to, to.size() - static_cast<std::size_t>(bytes), value, bytes, bigEndian);
}

}  // namespace kestrelid::imagefile
