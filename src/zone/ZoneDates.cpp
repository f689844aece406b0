#include "zone/ZoneDates.h"

#include <limits>
#include <tuple>

namespace kestrelid {
namespace {

// The latest year of the Gregorian calendar up to `latest` that ends in these two digits.
std::optional<int> latestYear(long long latest, int twoDigitYear) {
    const long long beyond = ((latest - twoDigitYear) % 100 + 100) % 100;
    const long long year = latest - beyond;
    if (year < 1 || year > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(year);
}

}  // namespace

std::optional<int> usualCentury(ZoneFieldKind kind, int twoDigitYear, CalendarDay asOf) {
    if (twoDigitYear < 0 || twoDigitYear > 99)
        return std::nullopt;
    switch (kind) {
    case ZoneFieldKind::dateOfBirth:
        return latestYear(asOf.year, twoDigitYear);
    case ZoneFieldKind::dateOfExpiry:
        return latestYear(asOf.year + 50LL, twoDigitYear);
    default:
        return std::nullopt;
    }
}

}  // namespace kestrelid

namespace kestrelid::zone {
namespace {

// A part of a date that is wrong, not unknown.
constexpr int kNoNumber = -1;

std::optional<int> twoDigits(std::string_view characters) {
    if (characters == "<<")
        return std::nullopt;
    int number = 0;
    for (const char character : characters) {
        if (character < '0' || character > '9')
            return kNoNumber;
        number = number * 10 + (character - '0');
    }
    return number;
}

int daysOf(const ZoneDate& date) {
    const int month = date.month.value_or(1);
    if (month == 2) {
        // Of two digits alone, 00 may be a leap year too: 2000 is one.
        const int year = date.year.value_or(date.twoDigitYear.value_or(0));
        const bool isLeap = year % 4 == 0 && (!date.year || year % 100 != 0 || year % 400 == 0);
        return isLeap ? 29 : 28;
    }
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

std::optional<int> wholeYear(ZoneFieldKind kind, const ZoneDate& date, const ZoneRules& rules) {
    if (!date.twoDigitYear || !rules.asOf || !rules.century)
        return std::nullopt;
    std::optional<int> year;
    try {
        year = rules.century(kind, *date.twoDigitYear, *rules.asOf);
    } catch (...) {  // the host's own rule
        return std::nullopt;
    }
    if (!year || *year < 1 || *year % 100 != *date.twoDigitYear)
        return std::nullopt;
    const CalendarDay& asOf = *rules.asOf;
    const auto day = std::tuple(date.month.value_or(1), date.day.value_or(1));
    const bool isLater = *year == asOf.year && day > std::tuple(asOf.month, asOf.day);
    if (kind == ZoneFieldKind::dateOfBirth && isLater)
        return *year > 100 ? std::optional(*year - 100) : std::nullopt;
    return year;
}

}  // namespace

std::optional<ZoneDate> dateFrom(ZoneFieldKind kind, std::string_view characters,
                                 const ZoneRules& rules) {
    ZoneDate date;
    date.twoDigitYear = twoDigits(characters.substr(0, 2));
    date.month = twoDigits(characters.substr(2, 2));
    date.day = twoDigits(characters.substr(4, 2));
    if (date.twoDigitYear == kNoNumber || (date.month && (*date.month < 1 || *date.month > 12)) ||
        (date.day && *date.day < 1))
        return std::nullopt;
    date.year = wholeYear(kind, date, rules);
    if (date.day && *date.day > daysOf(date))
        return std::nullopt;
    return date;
}

}  // namespace kestrelid::zone
