#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/NormalizedGeometry.h>
#include <kestrelid/WipedText.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid {

/// The layout of a machine-readable zone.
enum class ZoneFormat : std::uint8_t {
    td1,                 ///< cards: three lines of 30 (ICAO Doc 9303-5)
    td2,                 ///< cards: two lines of 36 (ICAO Doc 9303-6)
    td3,                 ///< passports: two lines of 44 (ICAO Doc 9303-4)
    mrvA,                ///< visas: two lines of 44 (ICAO Doc 9303-7)
    mrvB,                ///< visas: two lines of 36 (ICAO Doc 9303-7)
    frenchIdentityCard,  ///< two lines of 36, issued until 2021
    drivingLicence,      ///< one line of 30 (ISO/IEC 18013)
};

/// "TD3", "MRV-A" and so on.
[[nodiscard]] KESTRELID_EXPORT std::string_view nameOf(ZoneFormat format) noexcept;

/// What a field of a zone says.
enum class ZoneFieldKind : std::uint8_t {
    documentCode,
    issuingState,
    primaryIdentifier,    ///< the family name, as a rule
    secondaryIdentifier,  ///< the given names, as a rule
    documentNumber,
    nationality,
    dateOfBirth,
    sex,
    dateOfExpiry,
    optionalData,
    furtherOptionalData,  ///< of TD1's second line
    issuingOffice,        ///< French identity card: department and office
    composite,            ///< the digit over several fields; its text is empty
};

/// "document number" and so on, in English.
[[nodiscard]] KESTRELID_EXPORT std::string_view nameOf(ZoneFieldKind kind) noexcept;

/// "documentNumber" and so on, for programs: the enumerator's own name.
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(ZoneFieldKind kind) noexcept;

/// What a check digit says of the characters that it covers.
enum class CheckDigit : std::uint8_t {
    nonePrinted,  ///< the layout has none here, or a filler stands for it
    passed,
    failed,
};

/// "passed", "failed" or "none", for programs.
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(CheckDigit checkDigit) noexcept;

/// Where a character stands, counted from 0.
struct ZonePlace {
    int line = 0;
    int column = 0;

    friend bool operator==(const ZonePlace&, const ZonePlace&) = default;
};

/// A character that was taken for another than the one read best.
struct ZoneCorrection {
    /// What decided.
    enum class Evidence : std::uint8_t {
        grammar,     ///< only one of what was read may stand at this place
        checkDigit,  ///< with it alone the check digit passes
    };

    ZonePlace place;
    char from = '<';
    char to = '<';
    Evidence evidence = Evidence::grammar;

    friend bool operator==(const ZoneCorrection&, const ZoneCorrection&) = default;
};

/// A day of the Gregorian calendar.
struct CalendarDay {
    int year = 1;   ///< with its century
    int month = 1;  ///< 1..12
    int day = 1;    ///< 1..31

    /// The earlier day is the smaller one.
    friend auto operator<=>(const CalendarDay&, const CalendarDay&) = default;
};

/// A date as zones print it: unknown parts are fillers, and a year has two digits.
struct ZoneDate {
    std::optional<int> twoDigitYear{};  ///< 0..99
    std::optional<int> month{};         ///< 1..12
    std::optional<int> day{};           ///< 1..31
    std::optional<int> year{};          ///< with its century, where ZoneRules tell it

    friend bool operator==(const ZoneDate&, const ZoneDate&) = default;
};

/// What a state's or an organisation's code stands for.
struct ZoneState {
    std::string_view
        name;  ///< English, static, ends in a zero byte; empty for a code that is not known
    bool isKnown = false;  ///< ISO 3166-1, or a code of ICAO Doc 9303-3, section 5

    friend bool operator==(const ZoneState&, const ZoneState&) = default;
};

/// One field.
struct ZoneField {
    ZoneFieldKind kind = ZoneFieldKind::documentCode;

    /// For people: fillers at the end left out, a single one between letters a blank.
    WipedText text{};

    /// As printed, after corrections, fillers included.
    WipedText characters{};

    /// Of each character.
    std::vector<ZonePlace> places{};

    /// Of each character: 0..1. Text that comes without confidences counts as 1.
    Wiped<float> confidences{};

    CheckDigit checkDigit = CheckDigit::nonePrinted;

    /// What stands for the digit itself; none where the layout has none.
    std::optional<ZonePlace> checkDigitPlace{};

    /// In the characters and in the check digit.
    Wiped<ZoneCorrection> corrections{};

    /// Characters that might be others, though nothing speaks against them: read unclearly where no
    /// digit covers them, or where a second choice has the same value modulo 10 (K and <, 1 and L).
    std::vector<ZonePlace> doubtful{};

    /// Dates alone.
    std::optional<ZoneDate> date{};

    /// States alone.
    std::optional<ZoneState> state{};

    /// Identifiers alone: the names fill their field, so that some may have been left out.
    bool isPerhapsTruncated = false;
};

/// Why a zone is not to be trusted.
struct ZoneProblem {
    /// In the order of weight: what stands first makes most of the rest moot.
    enum class Kind : std::uint8_t {
        tooSmall,          ///< it was found but not read: too few pixels a character
        blurred,           ///< it was found but not read: out of focus, moved, or covered
        lineMissing,       ///< a layout's line is not there
        wrongLength,       ///< a line is longer or shorter than its layout
        notAllowed,        ///< a character stands where the layout has none such
        checkDigitFailed,  ///< of a field, or the composite one
        impossibleDate,    ///< a thirteenth month, a thirtieth of February
        unclear,           ///< read in doubt where no check digit covers it
    };

    Kind kind = Kind::unclear;
    std::optional<ZoneFieldKind> field{};
    std::optional<ZonePlace> place{};

    friend bool operator==(const ZoneProblem&, const ZoneProblem&) = default;
};

/// "checkDigitFailed" and so on, for programs: the enumerator's own name.
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(ZoneProblem::Kind kind) noexcept;

/// The problem in one line of English. Holds nothing that the zone says.
[[nodiscard]] KESTRELID_EXPORT std::string describe(const ZoneProblem& problem);

/// One character as a reader saw it.
struct ZoneCharacter {
    /// What it may be.
    struct Choice {
        char character = '<';      ///< A..Z, 0..9 or <; of text also others
        float probability = 0.0f;  ///< 0..1

        friend bool operator==(const Choice&, const Choice&) = default;
    };

    /// Best first; those that the reader did not think of have the probability 0.
    std::array<Choice, 4> choices{};
};

/// One line as a reader saw it, as many characters as the layout has.
struct ZoneLineReading {
    Wiped<ZoneCharacter> characters{};

    /// Around the line, as it is read: top left, top right, bottom right, bottom left. All zero for
    /// text.
    std::array<NormalizedPoint, 4> corners{};
};

/// The lines of one zone, from the top.
struct ZoneReading {
    /// Whether it could be read.
    enum class Legibility : std::uint8_t {
        readable,
        tooSmall,  ///< too few pixels a character for an answer to lean on
        blurred,   ///< out of focus, moved, or covered in large parts
    };

    std::vector<ZoneLineReading> lines{};
    Legibility legibility = Legibility::readable;
    double pixelsPerCharacter = 0.0;  ///< of the picture; 0: unknown
};

/// One line of a zone.
struct ZoneLine {
    WipedText text{};  ///< after corrections
    Wiped<float> confidences{};
    std::array<NormalizedPoint, 4> corners{};  ///< as in ZoneLineReading
};

/// A zone: what was read, what it says and what speaks against it. Personal data: never log it. A
/// value that wipes its memory on release.
struct MachineReadableZone {
    ZoneFormat format = ZoneFormat::td3;
    std::vector<ZoneLine> lines{};
    Wiped<ZoneField> fields{};            ///< in the order in which they are printed
    std::vector<ZoneProblem> problems{};  ///< empty: the zone is to be trusted
    double pixelsPerCharacter = 0.0;      ///< of the picture; 0: unknown

    /// The strict answer: complete, its grammar holds, all printed check digits pass, and every
    /// character that no digit covers was read clearly. Says nothing of whether the document is
    /// genuine.
    [[nodiscard]] bool isTrustworthy() const noexcept { return problems.empty(); }

    /// Null where the layout has no such field, or where it could not be told.
    [[nodiscard]] KESTRELID_EXPORT const ZoneField* field(ZoneFieldKind kind) const noexcept;
};

/// The century of a two-digit year (0..99): the whole year, or none where it cannot be told. kind:
/// dateOfBirth or dateOfExpiry. A rule sees no month: a birth that is told in asOf's own year but
/// later than asOf counts a hundred years earlier. What a rule throws counts as none.
using CenturyRule =
    std::function<std::optional<int>(ZoneFieldKind kind, int twoDigitYear, CalendarDay asOf)>;

/// Births: the latest such year that is not after asOf. Expiry: the year from 49 years before to 50
/// years after asOf.
[[nodiscard]] KESTRELID_EXPORT std::optional<int> usualCentury(ZoneFieldKind kind, int twoDigitYear,
                                                               CalendarDay asOf);

/// How zones are told.
struct ZoneRules {
    /// The day on which the document is looked at. None: years keep two digits. No clock is read.
    std::optional<CalendarDay> asOf{};

    CenturyRule century = usualCentury;

    /// From this probability on a character counts as read clearly: 0..1.
    float clearProbability = 0.9f;
};

/// The zones in text, one line of a zone a line of text, in the order in which they stand. Empty
/// lines and blanks around a line do not count; a line longer than any layout is none of a zone's.
/// Any bytes: what is no printable ASCII counts as one character for each UTF-8 sequence and shows
/// as a question mark. Nothing is corrected, since text has no second choices; blanks inside and
/// small letters are not allowed. Empty where memory is short.
///
/// What is no zone gives none: no more than one in eight characters stands where its layout has
/// none such, and a digit passes or all are allowed. A zone with a line missing, or one or two
/// characters too long or too short, is told in part, if at least two digits pass: of a line of
/// wrong length the fields up to the first whose own digit does not pass; without the line of
/// names, all digits pass.
[[nodiscard]] KESTRELID_EXPORT std::vector<MachineReadableZone>
parseZones(std::string_view text, const ZoneRules& rules = {});

/// The zone that a reader saw; none where its lines fit no layout, as for text. A character is
/// corrected only into one of its own choices, for a reason that the field names, and only where
/// exactly one correction fits. None where memory is short.
[[nodiscard]] KESTRELID_EXPORT std::optional<MachineReadableZone>
parseZone(const ZoneReading& reading, const ZoneRules& rules = {});

}  // namespace kestrelid
