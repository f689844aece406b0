#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace kestrelid::vision {

// What the recognition network tells apart: class 0 is the blank between two characters, classes 1
// to 94 are the printable characters of ASCII from "!" to "~", the last one is the space.
inline constexpr std::size_t kTextClasses = 96;

struct CtcReading {
    std::string text;
    float confidence = 0.0f;  // mean over the characters, 0..1
};

// Best path: probabilities holds one row of kTextClasses values for each step along the line.
[[nodiscard]] CtcReading bestPath(std::span<const float> probabilities);

}  // namespace kestrelid::vision
