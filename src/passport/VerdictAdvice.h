#pragma once

#include <kestrelid/Examination.h>
#include <kestrelid/Guidance.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace kestrelid::passport {

// What would make the next photo better than the one that was examined.
enum class VerdictAdvice : std::uint8_t {
    tooDark,  // these as kestrelid::Advice
    noPage,
    wholePage,
    moveCloser,
    moveBack,
    glare,
    holdStill,
    photoPage,     // it shows a document, but not the page with the holder's photo
    zoneMissing,   // the machine-readable lines are not in the picture
    zoneTooSmall,  // they are too far away to be read
    zoneBlurred,   // or out of focus, moved, or covered
    zoneCut,       // a part of them is missing
    zoneUnclear,   // they were read, but not beyond doubt
};

// A word for each, for QML: the enumerator's own name.
[[nodiscard]] constexpr std::string_view keyOf(VerdictAdvice advice) noexcept {
    switch (advice) {
    case VerdictAdvice::tooDark:
        return "tooDark";
    case VerdictAdvice::noPage:
        return "noPage";
    case VerdictAdvice::wholePage:
        return "wholePage";
    case VerdictAdvice::moveCloser:
        return "moveCloser";
    case VerdictAdvice::moveBack:
        return "moveBack";
    case VerdictAdvice::glare:
        return "glare";
    case VerdictAdvice::holdStill:
        return "holdStill";
    case VerdictAdvice::photoPage:
        return "photoPage";
    case VerdictAdvice::zoneMissing:
        return "zoneMissing";
    case VerdictAdvice::zoneTooSmall:
        return "zoneTooSmall";
    case VerdictAdvice::zoneBlurred:
        return "zoneBlurred";
    case VerdictAdvice::zoneCut:
        return "zoneCut";
    case VerdictAdvice::zoneUnclear:
        return "zoneUnclear";
    }
    return "photoPage";
}

// What the host asked of the photo.
struct VerdictRules {
    PassportProof proof = PassportProof::verdict;
    bool readsZone = true;
    GuidanceLimits limits{};
};

// The faults of the picture, the most pressing first: what the live guidance would say, and then
// what it would say if that were mended.
[[nodiscard]] inline std::vector<VerdictAdvice> faultsOf(const Examination& examined,
                                                         GuidanceLimits limits) {
    // A page as white as this is not glaring: paper in good light has such pixels everywhere.
    constexpr double kBrightPaper = 0.75;
    constexpr double kLeastSharpness = 0.15;  // see PictureQuality; frames are measured otherwise
    constexpr RectangleObservation kGoodPage{
        .boundingBox = {.x = 0.2, .y = 0.2, .width = 0.6, .height = 0.6},
        .corners = {{{0.2, 0.8}, {0.8, 0.8}, {0.8, 0.2}, {0.2, 0.2}}},
        .confidence = 1.0f};
    const PictureQuality& quality = examined.quality;
    PageLook look{.brightness = quality.brightness,
                  .glare = quality.brightness < kBrightPaper ? quality.clippedHighlights : 0.0,
                  .sharpness = quality.sharpness < kLeastSharpness ? 0.0 : 1.0};
    if (examined.chosenOutline)
        look.outline = examined.outlines[*examined.chosenOutline];
    limits.leastSharpness = 0.5;
    limits.hold = PageTracker::Time::zero();
    const auto mendPlace = [&] {
        look.outline = kGoodPage;
        limits.leastArea = 0.0;
        limits.greatestArea = 1.0;
        limits.leastMargin = 0.0;
    };

    std::vector<VerdictAdvice> faults;
    for (;;) {
        PageTracker tracker(limits);
        tracker.see(look, PageTracker::Time(0.0));
        tracker.see(look, PageTracker::Time(0.1));  // one look alone is no advice
        switch (tracker.live().advice) {
        case Advice::none:
            return faults;
        case Advice::tooDark:
            faults.push_back(VerdictAdvice::tooDark);
            limits.leastBrightness = -1.0;
            break;
        case Advice::noPage:
            faults.push_back(examined.lines.empty() ? VerdictAdvice::noPage
                                                    : VerdictAdvice::wholePage);
            mendPlace();
            break;
        case Advice::wholePage:
            faults.push_back(VerdictAdvice::wholePage);
            mendPlace();
            break;
        case Advice::moveCloser:
            faults.push_back(VerdictAdvice::moveCloser);
            mendPlace();
            break;
        case Advice::moveBack:
            faults.push_back(VerdictAdvice::moveBack);
            mendPlace();
            break;
        case Advice::glare:
            faults.push_back(VerdictAdvice::glare);
            limits.mostGlare = 1.0;
            break;
        case Advice::holdStill:
            faults.push_back(VerdictAdvice::holdStill);
            limits.leastSharpness = -1.0;
            limits.mostMotion = 1.0;
            break;
        }
    }
}

// What would have the zone read: it is not trustworthy, or not one of a passport.
[[nodiscard]] inline VerdictAdvice adviceForZone(const Examination& examined) {
    if (examined.zones.empty())
        return VerdictAdvice::zoneMissing;
    const MachineReadableZone& zone = examined.zones.front();
    if (zone.isTrustworthy())
        return VerdictAdvice::photoPage;
    switch (zone.problems.front().kind) {
    case ZoneProblem::Kind::tooSmall:
        return VerdictAdvice::zoneTooSmall;
    case ZoneProblem::Kind::blurred:
        return VerdictAdvice::zoneBlurred;
    case ZoneProblem::Kind::lineMissing:
    case ZoneProblem::Kind::wrongLength:
        return VerdictAdvice::zoneCut;
    case ZoneProblem::Kind::notAllowed:
    case ZoneProblem::Kind::checkDigitFailed:
    case ZoneProblem::Kind::impossibleDate:
    case ZoneProblem::Kind::unclear:
        break;
    }
    return VerdictAdvice::zoneUnclear;
}

// In the order in which a person should heed it, the shortest list that helps. Empty: the photo
// shows all that was asked for.
[[nodiscard]] inline std::vector<VerdictAdvice> adviceFor(const Examination& examined,
                                                          const VerdictRules& rules) {
    const bool isVerdict = examined.verdict.isPassport();
    std::vector<VerdictAdvice> advice;
    if (!examined.isPassport(rules.proof)) {
        advice = faultsOf(examined, rules.limits);
        const bool isZoneWhatLacks =
            rules.proof != PassportProof::verdict && (isVerdict || !examined.zones.empty());
        if (!isZoneWhatLacks) {
            const bool isOtherPage =
                examined.chosenOutline && !examined.lines.empty() && examined.matches.empty();
            if (isOtherPage || advice.empty())
                advice.push_back(VerdictAdvice::photoPage);
            return advice;
        }
    }
    if (rules.readsZone && !examined.strictPassportZone())
        advice.push_back(adviceForZone(examined));
    return advice;
}

}  // namespace kestrelid::passport
