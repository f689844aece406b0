#pragma once

#include <kestrelid/WipedText.h>

#include <cstddef>
#include <string_view>

namespace kestrelid::zone {

// What a field says for people: fillers at the end are left out, a single one between others is a
// blank. Of names each run of fillers is one blank.
[[nodiscard]] WipedText textForPeople(std::string_view characters, bool isName);

// Where the secondary identifier begins in a field of names: behind the first two fillers, or at
// the end where there are none.
[[nodiscard]] std::size_t secondaryStart(std::string_view names) noexcept;

}  // namespace kestrelid::zone
