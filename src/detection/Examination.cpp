#include <kestrelid/Examination.h>

#include <algorithm>

namespace kestrelid {

const MachineReadableZone* Examination::strictPassportZone() const noexcept {
    const auto found = std::ranges::find_if(zones, [](const MachineReadableZone& zone) {
        const ZoneField* code = zone.field(ZoneFieldKind::documentCode);
        return zone.format == ZoneFormat::td3 && zone.isTrustworthy() && code &&
               code->text.view().starts_with('P');
    });
    return found == zones.end() ? nullptr : &*found;
}

bool Examination::isPassport(PassportProof proof) const noexcept {
    const bool hasZone = strictPassportZone() != nullptr;
    switch (proof) {
    case PassportProof::verdict:
        return verdict.isPassport();
    case PassportProof::strictZone:
        return hasZone;
    case PassportProof::both:
        return verdict.isPassport() && hasZone;
    }
    return false;
}

}  // namespace kestrelid
