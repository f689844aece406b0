#pragma once

#include <string_view>

namespace kestrelid::vision {

// What the zone network tells apart, in the order of its classes; class 0 is the blank between two
// characters.
inline constexpr std::string_view kZoneCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789<";
inline constexpr int kZoneClasses = 38;
inline constexpr int kBlankClass = 0;

}  // namespace kestrelid::vision
