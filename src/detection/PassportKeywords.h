#pragma once

#include <span>
#include <string_view>

namespace kestrelid::detection {

// The printed words that speak for a passport, tuned to passports of Bangladesh and to common field
// labels. Repeated entries are intended: each is matched and counted by itself. One list for the
// whole process.
[[nodiscard]] std::span<const std::string_view> passportKeywords() noexcept;

}  // namespace kestrelid::detection
