#pragma once

#include "zone/ZoneGrid.h"

#include <vector>

// What the check digits say, and what they correct.
namespace kestrelid::zone {

// A field and the check digit that covers it alone.
struct DigitCheck {
    const FieldLayout* field = nullptr;
    std::vector<ZonePlace> covered;
    ZonePlace digit;
    CheckDigit result = CheckDigit::failed;

    // Whether the number goes on in the next field.
    [[nodiscard]] bool isLong() const noexcept { return digit != field->digitPlace(); }
};

struct Checks {
    std::vector<DigitCheck> fields;  // those that have a digit of their own
    CheckDigit composite = CheckDigit::nonePrinted;

    // Places where another reading would fit as well, and nearly as likely.
    std::vector<ZonePlace> rivals;

    [[nodiscard]] const DigitCheck* of(const FieldLayout& field) const noexcept;
    [[nodiscard]] int passed() const noexcept;
    [[nodiscard]] int failed() const noexcept;
};

// Looks at all check digits. Where one fails, changes characters of the grid into other choices of
// theirs if exactly one change makes it pass.
[[nodiscard]] Checks checkAndCorrect(ZoneGrid& grid);

}  // namespace kestrelid::zone
