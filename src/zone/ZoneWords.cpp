#include <kestrelid/MachineReadableZone.h>

#include <algorithm>
#include <new>

namespace kestrelid {

std::string_view nameOf(ZoneFormat format) noexcept {
    switch (format) {
    case ZoneFormat::td1:
        return "TD1";
    case ZoneFormat::td2:
        return "TD2";
    case ZoneFormat::td3:
        return "TD3";
    case ZoneFormat::mrvA:
        return "MRV-A";
    case ZoneFormat::mrvB:
        return "MRV-B";
    case ZoneFormat::frenchIdentityCard:
        return "French identity card";
    case ZoneFormat::drivingLicence:
        return "driving licence";
    }
    return "unknown";
}

std::string_view nameOf(ZoneFieldKind kind) noexcept {
    switch (kind) {
    case ZoneFieldKind::documentCode:
        return "document code";
    case ZoneFieldKind::issuingState:
        return "issuing state";
    case ZoneFieldKind::primaryIdentifier:
        return "primary identifier";
    case ZoneFieldKind::secondaryIdentifier:
        return "secondary identifier";
    case ZoneFieldKind::documentNumber:
        return "document number";
    case ZoneFieldKind::nationality:
        return "nationality";
    case ZoneFieldKind::dateOfBirth:
        return "date of birth";
    case ZoneFieldKind::sex:
        return "sex";
    case ZoneFieldKind::dateOfExpiry:
        return "date of expiry";
    case ZoneFieldKind::optionalData:
        return "optional data";
    case ZoneFieldKind::furtherOptionalData:
        return "further optional data";
    case ZoneFieldKind::issuingOffice:
        return "issuing office";
    case ZoneFieldKind::composite:
        return "composite";
    }
    return "unknown";
}

std::string_view keyOf(ZoneFieldKind kind) noexcept {
    switch (kind) {
    case ZoneFieldKind::documentCode:
        return "documentCode";
    case ZoneFieldKind::issuingState:
        return "issuingState";
    case ZoneFieldKind::primaryIdentifier:
        return "primaryIdentifier";
    case ZoneFieldKind::secondaryIdentifier:
        return "secondaryIdentifier";
    case ZoneFieldKind::documentNumber:
        return "documentNumber";
    case ZoneFieldKind::nationality:
        return "nationality";
    case ZoneFieldKind::dateOfBirth:
        return "dateOfBirth";
    case ZoneFieldKind::sex:
        return "sex";
    case ZoneFieldKind::dateOfExpiry:
        return "dateOfExpiry";
    case ZoneFieldKind::optionalData:
        return "optionalData";
    case ZoneFieldKind::furtherOptionalData:
        return "furtherOptionalData";
    case ZoneFieldKind::issuingOffice:
        return "issuingOffice";
    case ZoneFieldKind::composite:
        return "composite";
    }
    return "unknown";
}

std::string_view keyOf(CheckDigit checkDigit) noexcept {
    switch (checkDigit) {
    case CheckDigit::passed:
        return "passed";
    case CheckDigit::failed:
        return "failed";
    case CheckDigit::nonePrinted:
        break;
    }
    return "none";
}

std::string_view keyOf(ZoneProblem::Kind kind) noexcept {
    switch (kind) {
    case ZoneProblem::Kind::tooSmall:
        return "tooSmall";
    case ZoneProblem::Kind::blurred:
        return "blurred";
    case ZoneProblem::Kind::lineMissing:
        return "lineMissing";
    case ZoneProblem::Kind::wrongLength:
        return "wrongLength";
    case ZoneProblem::Kind::notAllowed:
        return "notAllowed";
    case ZoneProblem::Kind::checkDigitFailed:
        return "checkDigitFailed";
    case ZoneProblem::Kind::impossibleDate:
        return "impossibleDate";
    case ZoneProblem::Kind::unclear:
        return "unclear";
    }
    return "unknown";
}

namespace {

std::string_view whatIsWrong(ZoneProblem::Kind kind) noexcept {
    switch (kind) {
    case ZoneProblem::Kind::tooSmall:
        return "the picture has too few pixels for each character";
    case ZoneProblem::Kind::blurred:
        return "the zone is too blurred or covered to be read";
    case ZoneProblem::Kind::lineMissing:
        return "the line is missing";
    case ZoneProblem::Kind::wrongLength:
        return "the line is longer or shorter than its layout";
    case ZoneProblem::Kind::notAllowed:
        return "no such character may stand here";
    case ZoneProblem::Kind::checkDigitFailed:
        return "the check digit does not match";
    case ZoneProblem::Kind::impossibleDate:
        return "there is no such day";
    case ZoneProblem::Kind::unclear:
        return "the character was read unclearly";
    }
    return "unknown";
}

}  // namespace

std::string describe(const ZoneProblem& problem) try {
    using Kind = ZoneProblem::Kind;
    std::string text;
    if (problem.place) {
        text = "line " + std::to_string(problem.place->line + 1);
        if (problem.kind != Kind::lineMissing && problem.kind != Kind::wrongLength)
            text += ", column " + std::to_string(problem.place->column + 1);
    }
    if (problem.field)
        text += (text.empty() ? "" : ", ") + std::string(nameOf(*problem.field));
    text += text.empty() ? "" : ": ";
    return text.append(whatIsWrong(problem.kind));
} catch (const std::bad_alloc&) {
    return {};
}

const ZoneField* MachineReadableZone::field(ZoneFieldKind kind) const noexcept {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const ZoneField& field) { return field.kind == kind; });
    return found == fields.end() ? nullptr : &*found;
}

}  // namespace kestrelid
