#pragma once

#include <string_view>

namespace kestrelid::zone {

// What the code of a state or an organisation, without fillers, stands for, in English (UTF-8).
// Empty where it is not known.
[[nodiscard]] std::string_view stateName(std::string_view code) noexcept;

}  // namespace kestrelid::zone
