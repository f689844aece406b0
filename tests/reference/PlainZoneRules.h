#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

// The rules of machine-readable zones once more, slow and plain, from pictures of their lines with
// a letter for each place. They share nothing with the library but the words of its public header.
namespace kestrelid::reference {

[[nodiscard]] char checkDigitOf(std::string_view characters);

// What the library's zone says otherwise than these rules do of its lines; empty if nothing. Knows
// zones from text that have all of their lines.
[[nodiscard]] std::string disagreement(const MachineReadableZone& zone);

// The lines of a zone whose digits are right and whose characters are allowed.
[[nodiscard]] std::vector<std::string> randomZone(ZoneFormat format, std::mt19937& engine);

}  // namespace kestrelid::reference
