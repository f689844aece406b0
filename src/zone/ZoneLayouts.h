#pragma once

#include <kestrelid/MachineReadableZone.h>

#include <span>
#include <string_view>

// Where the fields of each kind of zone stand, as data.
namespace kestrelid::zone {

// What a field may hold.
enum class Alphabet : std::uint8_t {
    documentCode,  // a first letter of the layout, then a letter or a filler
    licenceCode,   // D1
    state,         // letters, then fillers
    names,         // letters and fillers; after three fillers nothing but fillers
    number,        // letters, digits and fillers
    date,          // digits, and fillers for what is not known
    sex,           // F, M, X or a filler
    checkDigit,    // a digit
    checkDigitOrFiller,
};

// The check digit that stands right behind a field.
enum class DigitRule : std::uint8_t {
    none,
    printed,
    orFiller,    // a filler may stand for it where the field is empty
    longNumber,  // a filler in its place: the number goes on in the next field (Doc 9303-5, 9303-6)
};

struct FieldLayout {
    ZoneFieldKind kind;
    int line;
    int column;
    int length;
    Alphabet alphabet;
    DigitRule digit = DigitRule::none;

    [[nodiscard]] constexpr ZonePlace place(int index) const { return {line, column + index}; }
    [[nodiscard]] constexpr ZonePlace digitPlace() const { return {line, column + length}; }
};

// Characters side by side that a composite digit covers.
struct Run {
    int line;
    int column;
    int length;
};

struct ZoneLayout {
    ZoneFormat format;
    int lineCount;
    int length;                           // of each line
    std::string_view firstLetters;        // that the document code may begin with
    std::string_view prefix;              // that the first line begins with
    std::span<const FieldLayout> fields;  // in the order in which they are printed
    std::span<const Run> composite;       // empty: no composite digit
    ZonePlace compositeDigit;
};

// All of them. Of two that fit equally well the first counts.
[[nodiscard]] std::span<const ZoneLayout> zoneLayouts() noexcept;

// The longest line of any layout.
inline constexpr int kLongestLine = 44;

// Whether character may follow what stands before it in the field.
[[nodiscard]] bool isAllowed(const ZoneLayout& layout, Alphabet alphabet, std::string_view before,
                             char character) noexcept;

}  // namespace kestrelid::zone
