#include "passport/VerdictAdvice.h"
#include "tests/support/FakeCapture.h"
#include "tests/support/FakeZones.h"

#include <array>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::test {
namespace {

using passport::VerdictRules;
using Kind = ZoneProblem::Kind;

constexpr PictureQuality kGood{.sharpness = 0.5, .brightness = 0.5};
const VerdictRules kZoneToo{.proof = PassportProof::both};
const VerdictRules kZoneAlone{.proof = PassportProof::strictZone};

struct Photo {
    const char* name;
    std::string advice;
    bool isVerdict = false;
    std::array<double, 4> page{0.2, 0.2, 0.8, 0.8};  // left, bottom, right, top; all 0: none
    bool hasText = true;
    bool hasWords = false;  // of a passport
    PictureQuality quality = kGood;
    std::optional<Kind> problem{};  // of its zone
    bool hasStrictZone = false;
    VerdictRules rules{};
};

Examination examined(const Photo& photo) {
    Examination result{.verdict = FakeDetector::verdict(photo.isVerdict, 0.5)};
    const auto [left, bottom, right, top] = photo.page;
    if (right > left) {
        result.outlines = {
            {.boundingBox = {left, bottom, right - left, top - bottom},
             .corners = {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}},
             .confidence = 1.0f}};
        result.chosenOutline = 0;
    }
    if (photo.hasText)
        result.lines.push_back({{}, {{"words", 1.0f}}});
    if (photo.hasWords)
        result.matches.push_back({});
    if (photo.problem)
        result.zones.push_back({.problems = {{.kind = *photo.problem}}});
    if (photo.hasStrictZone)
        result.zones.push_back(*parseZone(clearReading(kSpecimenZone)));
    result.quality = photo.quality;
    return result;
}

TEST(VerdictAdvice, SaysFirstWhatIsMostPressing) {
    constexpr std::array<double, 4> kNoPage{};
    const PictureQuality dark{.sharpness = 0.5, .brightness = 0.05};
    const PictureQuality blurred{.sharpness = 0.1, .brightness = 0.5};
    const PictureQuality glaring{.sharpness = 0.5, .brightness = 0.5, .clippedHighlights = 0.1};
    const PictureQuality paper{.sharpness = 0.5, .brightness = 0.9, .clippedHighlights = 0.3};
    for (const Photo& photo : std::vector<Photo>{
             {.name = "a wall", .advice = "noPage ", .page = kNoPage, .hasText = false},
             {.name = "nothing, in the dark",
             .advice = "tooDark noPage ",
             .page = kNoPage,
             .hasText = false,
             .quality = dark},
             {.name = "words that fill the picture",
             .advice = "wholePage ",
             .page = kNoPage,
             .hasWords = true},
             {.name = "cut at the left, shaken",
             .advice = "wholePage holdStill ",
             .page = {0.0, 0.2, 0.8, 0.8},
             .hasWords = true,
             .quality = blurred},
             {.name = "far away, nothing to read",
             .advice = "moveCloser ",
             .page = {0.4, 0.4, 0.6, 0.6},
             .hasText = false},
             {.name = "too near",
             .advice = "moveBack ",
             .page = {0.0, 0.0, 1.0, 1.0},
             .hasWords = true},
             {.name = "a lamp in the page",
             .advice = "glare ",
             .hasWords = true,
             .quality = glaring},
             {.name = "white paper", .advice = "photoPage ", .quality = paper},
             {.name = "a receipt, shaken", .advice = "holdStill photoPage ", .quality = blurred},
             {.name = "too few words", .advice = "photoPage ", .hasWords = true},
             {.name = "a passport without a zone", .advice = "zoneMissing ", .isVerdict = true},
             {.name = "the same, where nobody reads it",
             .advice = "",
             .isVerdict = true,
             .rules = {.readsZone = false}},
             {.name = "too small",
             .advice = "zoneTooSmall ",
             .isVerdict = true,
             .problem = Kind::tooSmall},
             {.name = "covered",
             .advice = "zoneBlurred ",
             .isVerdict = true,
             .problem = Kind::blurred},
             {.name = "cut off",
             .advice = "zoneCut ",
             .isVerdict = true,
             .problem = Kind::wrongLength},
             {.name = "misread",
             .advice = "zoneUnclear ",
             .isVerdict = true,
             .problem = Kind::checkDigitFailed},
             {.name = "a strict zone", .advice = "", .isVerdict = true, .hasStrictZone = true},
             {.name = "a strict zone that does not count",
             .advice = "photoPage ",
             .hasStrictZone = true},
             {.name = "a zone too, in glare",
             .advice = "glare zoneBlurred ",
             .isVerdict = true,
             .quality = glaring,
             .problem = Kind::blurred,
             .rules = kZoneToo},
             {.name = "a zone alone",
             .advice = "zoneUnclear ",
             .problem = Kind::unclear,
             .rules = kZoneAlone},
             {.name = "a zone alone, and there is none",
             .advice = "photoPage ",
             .rules = kZoneAlone},
         }) {
        std::string told;
        for (const passport::VerdictAdvice advice : adviceFor(examined(photo), photo.rules))
            told += std::string(keyOf(advice)) + ' ';
        EXPECT_EQ(told, photo.advice) << photo.name;
    }
}

}  // namespace
}  // namespace kestrelid::test
