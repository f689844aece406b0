// Zones as a reader saw them: what grammar and check digits correct, and what stays in doubt.
#include "tests/zone/ZoneSummary.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kestrelid::test {
namespace {

struct Doubt {
    ZonePlace place;
    std::vector<ZoneCharacter::Choice> choices;
};

ZoneReading readingOf(const std::vector<std::string>& lines, const std::vector<Doubt>& doubts) {
    ZoneReading reading;
    for (const std::string& line : lines) {
        reading.lines.emplace_back();
        for (const char character : line) {
            reading.lines.back().characters.push_back({});
            reading.lines.back().characters.back().choices[0] = {character, 0.98f};
        }
    }
    for (const Doubt& doubt : doubts)
        std::copy(doubt.choices.begin(), doubt.choices.end(),
                  reading.lines.at(static_cast<std::size_t>(doubt.place.line))
                      .characters.at(static_cast<std::size_t>(doubt.place.column))
                      .choices.begin());
    return reading;
}

// Corrections as "1:13 1>7 digit", doubtful places as "?1:28", problems.
std::string findings(const MachineReadableZone& zone) {
    std::string text;
    for (const ZoneField& field : zone.fields) {
        for (const ZoneCorrection& made : field.corrections)
            text += placeText(made.place) + " " + made.from + ">" + made.to +
                    (made.evidence == ZoneCorrection::Evidence::grammar ? " grammar" : " digit") +
                    " ";
        for (const ZonePlace place : field.doubtful)
            text += "?" + placeText(place) + " ";
    }
    const std::string all = summary(zone);
    return text + (zone.problems.empty() ? "strict" : all.substr(all.find('!')));
}

const std::vector<std::string> kTd3{"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                    "L898902C36UTO7408122F1204159ZE184226B<<<<<10"};

TEST(ParseZone, CorrectsOnlyWhereOneCorrectionFits) {
    const float kNan = std::nanf("");
    const struct {
        const char* name;
        std::vector<Doubt> doubts;
        std::string findings;
    } rows[] = {
        {"clear", {}, "strict"},
        {"grammarDecides", {{{0, 12}, {{'0', .05f}, {'N', .93f}}}}, "strict"},
        {"grammarCorrects",
         {{{0, 12}, {{'0', .6f}, {'N', .38f}}}},
         "0:12 0>N grammar ?0:12 !unclear@0:12"},
        {"grammarTakesNoRumour", {{{0, 12}, {{'0', .97f}, {'N', .019f}}}}, "!allowed@0:12"},
        {"fillerAfterTheNames",
         {{{0, 40}, {{'K', .5f}, {'<', .45f}}}},
         "0:40 K>< grammar ?0:40 !unclear@0:40"},
        {"firstLetter", {{{0, 0}, {{'V', .5f}, {'P', .45f}}}}, "0:0 V>P grammar ?0:0 !unclear@0:0"},
        {"firstLetterStays",
         {{{0, 0}, {{'P', .94f}, {'V', .05f}}}, {{1, 43}, {{'3', .98f}}}},
         "!digit@1:43"},
        {"digitCorrects", {{{1, 1}, {{'B', .55f}, {'8', .44f}}}}, "1:1 B>8 digit strict"},
        {"digitItself", {{{1, 19}, {{'7', .6f}, {'2', .3f}}}}, "1:19 7>2 digit strict"},
        {"compositeItself", {{{1, 43}, {{'8', .6f}, {'0', .3f}}}}, "1:43 8>0 digit strict"},
        {"tooUnlikely", {{{1, 1}, {{'B', .95f}, {'8', .027f}}}}, "!digit@1:9 !digit@1:43"},
        {"twoFit",
         {{{1, 1}, {{'B', .5f}, {'8', .25f}, {'I', .2f}}}},
         "?1:1 !digit@1:9 !digit@1:43 !unclear@1:1"},
        {"oneFitsFarBetter",
         {{{1, 1}, {{'B', .5f}, {'8', .4f}, {'I', .03f}}}},
         "1:1 B>8 digit strict"},
        {"twoPlaces",
         {{{1, 1}, {{'B', .5f}, {'8', .45f}}}, {{1, 5}, {{'D', .5f}, {'0', .45f}}}},
         "1:1 B>8 digit 1:5 D>0 digit strict"},
        {"threePlaces",
         {{{1, 1}, {{'B', .5f}, {'8', .45f}}},
          {{1, 3}, {{'E', .5f}, {'8', .45f}}},
          {{1, 5}, {{'D', .5f}, {'0', .45f}}}},
         "?1:1 ?1:3 ?1:5 !digit@1:9 !digit@1:43 !unclear@1:1 !unclear@1:3 !unclear@1:5"},
        // 1 for 7 at the first place, or 4 for 8 at the second: both explain the field's own digit.
        {"compositeDecides",
         {{{1, 13}, {{'1', .5f}, {'7', .45f}}}, {{1, 14}, {{'4', .5f}, {'8', .45f}}}},
         "1:13 1>7 digit strict"},
        {"failedCompositeHidesNothing",
         {{{1, 1}, {{'B', .55f}, {'8', .44f}}}, {{1, 43}, {{'3', .98f}}}},
         "1:1 B>8 digit !digit@1:43"},
        {"twinUnclear", {{{1, 37}, {{'<', .6f}, {'K', .3f}}}}, "?1:37 !unclear@1:37"},
        {"twinClear", {{{1, 37}, {{'<', .91f}, {'K', .07f}}}}, "?1:37 strict"},
        {"coveredBySomeDigit", {{{1, 1}, {{'8', .5f}, {'B', .45f}}}}, "strict"},
        {"notCovered", {{{1, 20}, {{'F', .7f}, {'M', .2f}}}}, "?1:20 !unclear@1:20"},
        {"uselessNumbers", {{{0, 12}, {{'N', kNan}, {'N', 7.0f}, {'N', -1.0f}}}}, "strict"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto zone = parseZone(readingOf(kTd3, row.doubts));
        ASSERT_TRUE(zone);
        EXPECT_EQ(findings(*zone), row.findings);
    }
}

TEST(ParseZone, FitsTheWholeReadingOrNothing) {
    EXPECT_FALSE(parseZone({}));
    EXPECT_FALSE(parseZone(readingOf({"P<UTO"}, {})));
    EXPECT_FALSE(parseZone(readingOf({kTd3[0], kTd3[1], kTd3[0]}, {})));
    EXPECT_FALSE(parseZone(readingOf({"", ""}, {})));
    const auto second = parseZone(readingOf({kTd3[1]}, {}));
    ASSERT_TRUE(second);
    EXPECT_EQ(findings(*second), "!missing@0:0");

    ZoneReading reading = readingOf(kTd3, {});
    reading.lines[1].corners[2] = {0.5, 0.25};
    const auto zone = parseZone(reading, {.clearProbability = 0.99f});
    ASSERT_TRUE(zone);
    EXPECT_EQ(zone->lines[1].corners[2], (NormalizedPoint{0.5, 0.25}));
    EXPECT_EQ(zone->field(ZoneFieldKind::sex)->confidences, Wiped<float>{0.98f});
    EXPECT_FALSE(zone->isTrustworthy());
}

TEST(ParseZone, DescribesProblemsWithoutContent) {
    EXPECT_EQ(describe({ZoneProblem::Kind::checkDigitFailed, ZoneFieldKind::sex, ZonePlace{1, 4}}),
              "line 2, column 5, sex: the check digit does not match");
    EXPECT_EQ(describe({ZoneProblem::Kind::lineMissing, std::nullopt, ZonePlace{0, 0}}),
              "line 1: the line is missing");
}

}  // namespace
}  // namespace kestrelid::test
