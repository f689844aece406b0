#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/PassportValidationResult.h>
#include <kestrelid/TextEvidence.h>
#include <kestrelid/VisionServices.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace kestrelid {

/// How good a picture is for reading. Of the document where an outline was found, else of all.
struct PictureQuality {
    /// Share of the contrast that its sharpest edges take from one pixel to the next: 0..1. Below
    /// about 0.15 letters run together.
    double sharpness = 0.0;

    double brightness = 0.0;  ///< mean of the grey values: 0..1

    /// Share of the pixels that are as bright as a pixel can be: 0..1. Glare, where the rest is not
    /// bright as well.
    double clippedHighlights = 0.0;

    /// From one character of the zone to the next, in pixels; none without a zone.
    std::optional<double> pixelsPerCharacter{};
};

/// How long the parts of an examination took.
struct ExaminationTimes {
    /// With its fractions.
    using Milliseconds = std::chrono::duration<double, std::milli>;

    Milliseconds outlines{};
    Milliseconds text{};
    Milliseconds zones{};
    Milliseconds quality{};
};

/// What counts as a passport.
enum class PassportProof : std::uint8_t {
    verdict,     ///< the verdict: outline and printed words
    strictZone,  ///< a trustworthy zone of a passport
    both,
};

/// All that one look at a picture gives. Personal data: never log it.
struct Examination {
    /// As validate() gives it, and untouched by everything below.
    PassportValidationResult verdict;

    /// As the service found them, in its order.
    std::vector<RectangleObservation> outlines{};

    /// The outline that the text was read in, as an index of outlines.
    std::optional<std::size_t> chosenOutline{};

    /// In reading order; their boxes are relative to the picture, not to the outline.
    std::vector<TextObservation> lines{};

    /// Entries of the detector's table, as the verdict counts them.
    std::vector<KeywordMatch> matches{};

    /// The machine-readable zones from the top of the picture down, the untrustworthy and the
    /// illegible among them: each says why.
    std::vector<MachineReadableZone> zones{};

    PictureQuality quality{};
    ExaminationTimes times{};

    /// The first trustworthy zone of a passport; null if there is none.
    [[nodiscard]] KESTRELID_EXPORT const MachineReadableZone* strictPassportZone() const noexcept;

    /// Whether the picture shows a passport, by the proof that the host asks for.
    [[nodiscard]] KESTRELID_EXPORT bool isPassport(PassportProof proof) const noexcept;
};

/// How a picture is to be examined.
struct ExaminationOptions {
    ZoneRules zoneRules{};

    /// Gives the examination up between its parts; completion is destroyed without a call.
    std::stop_token stop{};
};

}  // namespace kestrelid
