#pragma once

#include <cstddef>

// Check digits of machine-readable zones (ICAO Doc 9303-3, section 4.9): each character has a value
// and, by its place, a weight; the digit is the sum of the products modulo 10.
namespace kestrelid::zone {

// 0..35: a digit's own value, 10 for A to 35 for Z, 0 for the filler. -1: no character of a zone.
[[nodiscard]] constexpr int valueOf(char character) noexcept {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'A' && character <= 'Z')
        return character - 'A' + 10;
    return character == '<' ? 0 : -1;
}

// 7, 3, 1, 7, 3, 1 and so on from the first character covered. None shares a factor with 10, so
// that each single change of a value modulo 10 changes the digit.
[[nodiscard]] constexpr int weightAt(std::size_t index) noexcept {
    constexpr int kWeights[] = {7, 3, 1};
    return kWeights[index % 3];
}

}  // namespace kestrelid::zone
