#include "zone/ZoneLayouts.h"

namespace kestrelid::zone {
namespace {

using enum ZoneFieldKind;

// ICAO Doc 9303-5, section 4.2. A number of more than nine characters, as on Belgian cards, goes on
// in the optional data.
constexpr FieldLayout kTd1[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {documentNumber, 0, 5, 9, Alphabet::number, DigitRule::longNumber},
    {optionalData, 0, 15, 15, Alphabet::number},
    {dateOfBirth, 1, 0, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 7, 1, Alphabet::sex},
    {dateOfExpiry, 1, 8, 6, Alphabet::date, DigitRule::printed},
    {nationality, 1, 15, 3, Alphabet::state},
    {furtherOptionalData, 1, 18, 11, Alphabet::number},
    {primaryIdentifier, 2, 0, 30, Alphabet::names},
};
constexpr Run kTd1Composite[] = {{0, 5, 25}, {1, 0, 7}, {1, 8, 7}, {1, 18, 11}};

// ICAO Doc 9303-6, section 4.2.
constexpr FieldLayout kTd2[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {primaryIdentifier, 0, 5, 31, Alphabet::names},
    {documentNumber, 1, 0, 9, Alphabet::number, DigitRule::longNumber},
    {nationality, 1, 10, 3, Alphabet::state},
    {dateOfBirth, 1, 13, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 20, 1, Alphabet::sex},
    {dateOfExpiry, 1, 21, 6, Alphabet::date, DigitRule::printed},
    {optionalData, 1, 28, 7, Alphabet::number},
};
constexpr Run kTd2Composite[] = {{1, 0, 10}, {1, 13, 7}, {1, 21, 14}};

// ICAO Doc 9303-4, section 4.2.
constexpr FieldLayout kTd3[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {primaryIdentifier, 0, 5, 39, Alphabet::names},
    {documentNumber, 1, 0, 9, Alphabet::number, DigitRule::printed},
    {nationality, 1, 10, 3, Alphabet::state},
    {dateOfBirth, 1, 13, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 20, 1, Alphabet::sex},
    {dateOfExpiry, 1, 21, 6, Alphabet::date, DigitRule::printed},
    {optionalData, 1, 28, 14, Alphabet::number, DigitRule::orFiller},
};
constexpr Run kTd3Composite[] = {{1, 0, 10}, {1, 13, 7}, {1, 21, 22}};

// ICAO Doc 9303-7, sections 4.2 and 5.2. Visas have no composite digit.
constexpr FieldLayout kMrvA[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {primaryIdentifier, 0, 5, 39, Alphabet::names},
    {documentNumber, 1, 0, 9, Alphabet::number, DigitRule::printed},
    {nationality, 1, 10, 3, Alphabet::state},
    {dateOfBirth, 1, 13, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 20, 1, Alphabet::sex},
    {dateOfExpiry, 1, 21, 6, Alphabet::date, DigitRule::printed},
    {optionalData, 1, 28, 16, Alphabet::number},
};
constexpr FieldLayout kMrvB[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {primaryIdentifier, 0, 5, 31, Alphabet::names},
    {documentNumber, 1, 0, 9, Alphabet::number, DigitRule::printed},
    {nationality, 1, 10, 3, Alphabet::state},
    {dateOfBirth, 1, 13, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 20, 1, Alphabet::sex},
    {dateOfExpiry, 1, 21, 6, Alphabet::date, DigitRule::printed},
    {optionalData, 1, 28, 8, Alphabet::number},
};

// The French national identity card of 1988 to 2021, which is older than Doc 9303-6: surname and
// given names apart, the composite digit over all of both lines. Checked against the digits of the
// specimen that the ministry published.
constexpr FieldLayout kFrench[] = {
    {documentCode, 0, 0, 2, Alphabet::documentCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {primaryIdentifier, 0, 5, 25, Alphabet::names},
    {issuingOffice, 0, 30, 6, Alphabet::number},
    {documentNumber, 1, 0, 12, Alphabet::number, DigitRule::printed},
    {secondaryIdentifier, 1, 13, 14, Alphabet::names},
    {dateOfBirth, 1, 27, 6, Alphabet::date, DigitRule::printed},
    {sex, 1, 34, 1, Alphabet::sex},
};
constexpr Run kFrenchComposite[] = {{0, 0, 36}, {1, 0, 35}};

// ISO/IEC 18013: what stands between the state and the digit is the state's own affair.
constexpr FieldLayout kLicence[] = {
    {documentCode, 0, 0, 2, Alphabet::licenceCode},
    {issuingState, 0, 2, 3, Alphabet::state},
    {optionalData, 0, 5, 24, Alphabet::number},
};
constexpr Run kLicenceComposite[] = {{0, 0, 29}};

// Passports begin with P; other booklets of their size, such as those of crews, with other letters.
constexpr std::string_view kNotVisas = "ABCDEFGHIJKLMNOPQRSTUWXYZ";
constexpr std::string_view kCards = "ACI";

constexpr ZoneLayout kLayouts[] = {
    {ZoneFormat::td3, 2, 44, kNotVisas, "", kTd3, kTd3Composite, {1, 43}},
    {ZoneFormat::mrvA, 2, 44, "V", "", kMrvA, {}, {}},
    {ZoneFormat::td1, 3, 30, kCards, "", kTd1, kTd1Composite, {1, 29}},
    {ZoneFormat::frenchIdentityCard, 2, 36, "I", "IDFRA", kFrench, kFrenchComposite, {1, 35}},
    {ZoneFormat::td2, 2, 36, kCards, "", kTd2, kTd2Composite, {1, 35}},
    {ZoneFormat::mrvB, 2, 36, "V", "", kMrvB, {}, {}},
    {ZoneFormat::drivingLicence, 1, 30, "D", "D1", kLicence, kLicenceComposite, {0, 29}},
};

bool isLetter(char character) noexcept {
    return character >= 'A' && character <= 'Z';
}

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

}  // namespace

std::span<const ZoneLayout> zoneLayouts() noexcept {
    return kLayouts;
}

bool isAllowed(const ZoneLayout& layout, Alphabet alphabet, std::string_view before,
               char character) noexcept {
    const bool letterOrFiller = isLetter(character) || character == '<';
    switch (alphabet) {
    case Alphabet::documentCode:
        return before.empty() ? layout.firstLetters.find(character) != std::string_view::npos
                              : letterOrFiller;
    case Alphabet::licenceCode:
        return character == (before.empty() ? 'D' : '1');
    case Alphabet::state:
        if (before.empty())
            return isLetter(character);
        return before.ends_with('<') ? character == '<' : letterOrFiller;
    case Alphabet::names:
        if (before.empty())
            return isLetter(character);
        return before.ends_with("<<<") ? character == '<' : letterOrFiller;
    case Alphabet::number:
        return letterOrFiller || isDigit(character);
    case Alphabet::date:
    case Alphabet::checkDigitOrFiller:
        return isDigit(character) || character == '<';
    case Alphabet::checkDigit:
        return isDigit(character);
    case Alphabet::sex:
        return character == 'F' || character == 'M' || character == 'X' || character == '<';
    }
    return false;
}

}  // namespace kestrelid::zone
