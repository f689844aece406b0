#include "c/Border.h"
#include "c/Handles.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace {

using kestrelid::CheckDigit;
using kestrelid::keyOf;
using kestrelid::MachineReadableZone;
using kestrelid::nameOf;
using kestrelid::WipedText;
using kestrelid::ZoneField;
using kestrelid::ZoneFieldKind;
using kestrelid::ZoneFormat;
using kestrelid::ZoneProblem;
using kestrelid::c::Failure;
using kestrelid::c::guarded;
using kestrelid::c::require;

// The enumerators of both interfaces have the same values, so that they can be cast.
template <typename Enumerator>
constexpr bool same(int forC, Enumerator forCpp) {
    return forC == static_cast<int>(forCpp);
}
static_assert(same(KESTRELID_TD1, ZoneFormat::td1) && same(KESTRELID_TD2, ZoneFormat::td2) &&
              same(KESTRELID_TD3, ZoneFormat::td3) && same(KESTRELID_MRV_A, ZoneFormat::mrvA) &&
              same(KESTRELID_MRV_B, ZoneFormat::mrvB) &&
              same(KESTRELID_FRENCH_IDENTITY_CARD, ZoneFormat::frenchIdentityCard) &&
              same(KESTRELID_DRIVING_LICENCE, ZoneFormat::drivingLicence));
static_assert(same(KESTRELID_DOCUMENT_CODE, ZoneFieldKind::documentCode) &&
              same(KESTRELID_ISSUING_STATE, ZoneFieldKind::issuingState) &&
              same(KESTRELID_PRIMARY_IDENTIFIER, ZoneFieldKind::primaryIdentifier) &&
              same(KESTRELID_SECONDARY_IDENTIFIER, ZoneFieldKind::secondaryIdentifier) &&
              same(KESTRELID_DOCUMENT_NUMBER, ZoneFieldKind::documentNumber) &&
              same(KESTRELID_NATIONALITY, ZoneFieldKind::nationality) &&
              same(KESTRELID_DATE_OF_BIRTH, ZoneFieldKind::dateOfBirth) &&
              same(KESTRELID_SEX, ZoneFieldKind::sex) &&
              same(KESTRELID_DATE_OF_EXPIRY, ZoneFieldKind::dateOfExpiry) &&
              same(KESTRELID_OPTIONAL_DATA, ZoneFieldKind::optionalData) &&
              same(KESTRELID_FURTHER_OPTIONAL_DATA, ZoneFieldKind::furtherOptionalData) &&
              same(KESTRELID_ISSUING_OFFICE, ZoneFieldKind::issuingOffice) &&
              same(KESTRELID_COMPOSITE, ZoneFieldKind::composite));
static_assert(same(KESTRELID_DIGIT_NOT_PRINTED, CheckDigit::nonePrinted) &&
              same(KESTRELID_DIGIT_PASSED, CheckDigit::passed) &&
              same(KESTRELID_DIGIT_FAILED, CheckDigit::failed));
static_assert(same(KESTRELID_TOO_SMALL, ZoneProblem::Kind::tooSmall) &&
              same(KESTRELID_BLURRED, ZoneProblem::Kind::blurred) &&
              same(KESTRELID_LINE_MISSING, ZoneProblem::Kind::lineMissing) &&
              same(KESTRELID_WRONG_LENGTH, ZoneProblem::Kind::wrongLength) &&
              same(KESTRELID_NOT_ALLOWED, ZoneProblem::Kind::notAllowed) &&
              same(KESTRELID_CHECK_DIGIT_FAILED, ZoneProblem::Kind::checkDigitFailed) &&
              same(KESTRELID_IMPOSSIBLE_DATE, ZoneProblem::Kind::impossibleDate) &&
              same(KESTRELID_UNCLEAR, ZoneProblem::Kind::unclear));

constexpr std::string_view kEnd("\0", 1);

// Null if there is no such one.
template <typename List>
const typename List::value_type* at(const List& list, std::size_t index) {
    return index < list.size() ? &list[index] : nullptr;
}

const MachineReadableZone* zoneAt(const KestrelidZones* zones, std::size_t zone) {
    return zones ? at(zones->zones, zone) : nullptr;
}

const ZoneField* fieldAt(const KestrelidZones* zones, std::size_t zone, std::size_t field) {
    const MachineReadableZone* found = zoneAt(zones, zone);
    return found ? at(found->fields, field) : nullptr;
}

const char* shown(const char* text, std::size_t length, size_t* size) {
    if (size)
        *size = length;
    return text;
}

// text: ends in a zero byte, or null.
const char* shown(const WipedText* text, size_t* size) {
    return text ? shown(text->view().data(), text->view().size() - kEnd.size(), size)
                : shown(nullptr, 0, size);
}

const char* shown(const std::string* text, size_t* size) {
    return text ? shown(text->c_str(), text->size(), size) : shown(nullptr, 0, size);
}

// Of an enumerator. The words are literals, so that a zero byte follows them.
template <typename Enumerator>
const char* word(int32_t value, Enumerator last, std::string_view (*wordOf)(Enumerator)) {
    const bool isKnown = value >= 0 && value <= static_cast<int32_t>(last);
    return isKnown ? wordOf(static_cast<Enumerator>(value)).data() : "unknown";
}

// What both sides know; zeros behind it. firstSize: of the struct's first version.
template <typename Struct>
bool fill(Struct* filled, std::size_t firstSize, Struct known) {
    const std::size_t size = filled ? filled->struct_size : 0;
    if (size < firstSize)
        return false;
    known.struct_size = size;
    std::memset(filled, 0, size);
    std::memcpy(filled, &known, std::min(size, sizeof(known)));
    return true;
}

}  // namespace

kestrelid::ZoneRules kestrelid::c::zoneRules(const KestrelidDay* asOf) {
    ZoneRules rules;
    if (!asOf)
        return rules;
    using namespace std::chrono;
    const bool isInRange = asOf->year >= 1 && asOf->year <= 9999 && asOf->month >= 1 &&
                           asOf->month <= 12 && asOf->day >= 1 && asOf->day <= 31;
    if (!isInRange || !year_month_day(year(asOf->year), month(static_cast<unsigned>(asOf->month)),
                                      day(static_cast<unsigned>(asOf->day)))
                           .ok())
        throw Failure{KESTRELID_INVALID_ARGUMENT, "as_of is no day"};
    rules.asOf = CalendarDay{.year = asOf->year, .month = asOf->month, .day = asOf->day};
    return rules;
}

KestrelidZones::KestrelidZones(std::vector<MachineReadableZone> given) : zones(std::move(given)) {
    for (MachineReadableZone& zone : zones) {
        for (kestrelid::ZoneLine& line : zone.lines)
            line.text.append(kEnd);
        for (ZoneField& field : zone.fields) {
            field.text.append(kEnd);
            field.characters.append(kEnd);
        }
        auto& described = problems.emplace_back();
        for (const ZoneProblem& problem : zone.problems)
            described.push_back(describe(problem));
    }
}

KestrelidStatus kestrelid_zones_parse(const char* text, size_t size, const KestrelidDay* as_of,
                                      KestrelidZones** zones, KestrelidError** error) {
    return guarded(error, [&] {
        require(zones, "zones");
        *zones = nullptr;
        require(text, "text");
        *zones =
            new KestrelidZones(kestrelid::parseZones({text, size}, kestrelid::c::zoneRules(as_of)));
    });
}

void kestrelid_zones_release(KestrelidZones* zones) {
    delete zones;
}

size_t kestrelid_zones_count(const KestrelidZones* zones) {
    return zones ? zones->zones.size() : 0;
}

int kestrelid_zones_zone(const KestrelidZones* zones, size_t zone, KestrelidZone* filled) {
    const MachineReadableZone* found = zoneAt(zones, zone);
    if (!found)
        return 0;
    KestrelidZone known{.struct_size = 0,
                        .lines = found->lines.size(),
                        .fields = found->fields.size(),
                        .problems = found->problems.size(),
                        .format = static_cast<int32_t>(found->format),
                        .is_strict = found->isTrustworthy() ? 1 : 0,
                        .pixels_per_character = found->pixelsPerCharacter,
                        .corners = {}};
    const bool isOfPicture = !found->lines.empty() && found->lines.front().corners !=
                                                          decltype(kestrelid::ZoneLine::corners){};
    if (isOfPicture) {
        const auto& first = found->lines.front().corners;
        const auto& last = found->lines.back().corners;
        known.corners[0] = kestrelid::c::pointForC(first[0]);
        known.corners[1] = kestrelid::c::pointForC(first[1]);
        known.corners[2] = kestrelid::c::pointForC(last[2]);
        known.corners[3] = kestrelid::c::pointForC(last[3]);
    }
    return fill(filled, offsetof(KestrelidZone, corners) + sizeof(known.corners), known) ? 1 : 0;
}

const char* kestrelid_zones_line(const KestrelidZones* zones, size_t zone, size_t line,
                                 size_t* size) {
    const MachineReadableZone* found = zoneAt(zones, zone);
    const kestrelid::ZoneLine* text = found ? at(found->lines, line) : nullptr;
    return shown(text ? &text->text : nullptr, size);
}

int kestrelid_zones_field(const KestrelidZones* zones, size_t zone, size_t field,
                          KestrelidZoneField* filled) {
    const ZoneField* found = fieldAt(zones, zone, field);
    if (!found)
        return 0;
    const kestrelid::ZoneDate date = found->date.value_or(kestrelid::ZoneDate{});
    const KestrelidZoneField known{
        .struct_size = 0,
        .corrections = found->corrections.size(),
        .doubtful = found->doubtful.size(),
        .kind = static_cast<int32_t>(found->kind),
        .check_digit = static_cast<int32_t>(found->checkDigit),
        .year = date.year.value_or(-1),
        .two_digit_year = date.twoDigitYear.value_or(-1),
        .month = date.month.value_or(-1),
        .day = date.day.value_or(-1),
        .is_known_state = found->state ? (found->state->isKnown ? 1 : 0) : -1,
        .is_perhaps_truncated = found->isPerhapsTruncated ? 1 : 0,
    };
    return fill(filled,
                offsetof(KestrelidZoneField, is_perhaps_truncated) +
                    sizeof(known.is_perhaps_truncated),
                known)
               ? 1
               : 0;
}

const char* kestrelid_zones_field_text(const KestrelidZones* zones, size_t zone, size_t field,
                                       size_t* size) {
    const ZoneField* found = fieldAt(zones, zone, field);
    return shown(found ? &found->text : nullptr, size);
}

const char* kestrelid_zones_field_characters(const KestrelidZones* zones, size_t zone, size_t field,
                                             size_t* size) {
    const ZoneField* found = fieldAt(zones, zone, field);
    return shown(found ? &found->characters : nullptr, size);
}

const char* kestrelid_zones_field_state(const KestrelidZones* zones, size_t zone, size_t field,
                                        size_t* size) {
    const ZoneField* found = fieldAt(zones, zone, field);
    if (!found || !found->state)
        return shown(nullptr, 0, size);
    const std::string_view name = found->state->name;
    return shown(name.empty() ? "" : name.data(), name.size(), size);
}

const char* kestrelid_zones_problem(const KestrelidZones* zones, size_t zone, size_t problem,
                                    int32_t* kind, size_t* size) {
    const MachineReadableZone* found = zoneAt(zones, zone);
    const ZoneProblem* wrong = found ? at(found->problems, problem) : nullptr;
    if (kind)
        *kind = wrong ? static_cast<int32_t>(wrong->kind) : -1;
    return shown(wrong ? &zones->problems[zone][problem] : nullptr, size);
}

const char* kestrelid_zone_format_name(int32_t format) {
    return word<ZoneFormat>(format, ZoneFormat::drivingLicence, nameOf);
}

const char* kestrelid_zone_field_key(int32_t kind) {
    return word<ZoneFieldKind>(kind, ZoneFieldKind::composite, keyOf);
}

const char* kestrelid_check_digit_key(int32_t check_digit) {
    return word<CheckDigit>(check_digit, CheckDigit::failed, keyOf);
}

const char* kestrelid_zone_problem_key(int32_t kind) {
    return word<ZoneProblem::Kind>(kind, ZoneProblem::Kind::unclear, keyOf);
}
