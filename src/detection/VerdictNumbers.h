#pragma once

#include <cstdint>

namespace kestrelid::detection {

// The numbers behind the verdict, which the detector shows under the same names.
inline constexpr std::int64_t kKeywordMatchThreshold = 3;
inline constexpr std::int64_t kSingleKeywordFuzzyThreshold = 4;
inline constexpr double kRectangleAreaThreshold = 0.15;
inline constexpr double kMrzConfidenceWeight = 0.5;
inline constexpr double kKeywordConfidenceWeight = 0.4;
inline constexpr double kRectConfidenceWeight = 0.1;

}  // namespace kestrelid::detection
