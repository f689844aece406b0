#include "detection/Console.h"
#include "detection/Scoring.h"

#include <kestrelid/TextEvidence.h>
#include <kestrelid/Version.h>
#include <kestrelid/VisionServices.h>

#include <gmock/gmock.h>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::detection {
namespace {

using testing::ElementsAre;

TEST(Scoring, AddsTheThreeFindings) {
    const KeywordMatch match{"SURNAME", 0};
    const MrzLikeLines zone{.found = true, .reason = "two lines"};
    const struct {
        double outline;
        std::size_t matches;
        MrzLikeLines zone;
        double confidence;  // exactly: the sum is made in this order
        bool isPassport;
    } rows[] = {{1.0, 0, {}, 0.1, false},
                {1.0, 2, {}, 1.0 * 0.1 + 2.0 / 3.0 * 0.4, false},
                {1.0, 3, {}, 0.5, true},
                {0.0, 4, {}, 0.4, false},
                {0.0, 0, zone, 0.5, true},
                {1.0, 1, zone, 1.0 * 0.1 + (1.0 / 3.0 * 0.4 + 0.5), true},
                {0.5, 3, zone, 0.5 * 0.1 + (1.0 * 0.4 + 0.5), true},
                {1.1, 3, zone, 1.0, true},
                {-9.0, 3, zone, -9.0 * 0.1 + (0.4 + 0.5), true}};  // a zone decides alone
    for (const auto& row : rows) {
        const Score score =
            combine(row.outline, "An outline.", std::vector(row.matches, match), row.zone);
        EXPECT_EQ(score.confidence, row.confidence);
        EXPECT_EQ(score.isPassport, row.isPassport);
        EXPECT_EQ(score.reasons.at(0), "An outline.");
        EXPECT_EQ(score.reasons.at(2),
                  row.zone.found ? "MRZ-like text detected (two lines)." : "No MRZ found.");
    }
    EXPECT_THAT(combine(0.0, "", {}, zone).reasons,
                ElementsAre("No passport keywords found.", "MRZ-like text detected (two lines)."));
}

TEST(Console, TellsAShortageWithoutAddingToIt) {
    std::string told;
    const Console console([&](std::string_view line) { told = line; });
    const std::string text = "why";
    const std::string_view longerThanAnyString(text.data(), text.max_size() + 1);
    console.tell("Failed:", longerThanAnyString);
    EXPECT_EQ(told, "Failed: not enough memory");
    console.tell(std::string(50, 'x'), longerThanAnyString);
    EXPECT_EQ(told, std::string(46, 'x') + " not enough memory");
}

TEST(TextObservation, GivesAsManyReadingsAsAreAskedFor) {
    const TextObservation observation({}, {{"best", 0.9f}, {"next", 0.1f}});
    const std::pair<int, std::size_t> rows[] = {{-1, 0}, {0, 0}, {1, 1}, {2, 2}, {3, 2}};
    for (const auto& [asked, given] : rows)
        EXPECT_EQ(observation.topCandidates(asked).size(), given) << asked;
}

TEST(TextEvidence, KeepsLinesForTheZoneOnly) {
    const TextEvidence evidence = textEvidence("Surname\n" + std::string(66, '<'));
    EXPECT_EQ(evidence.cleaned, "SURNAME " + std::string(66, '<'));
    EXPECT_EQ(evidence.keywordReason, "Keywords matched: SURNAME (distance 0)");
    EXPECT_TRUE(evidence.mrzLike.found);
}

TEST(InvalidUtf8, IsFoundWhereItBegins) {
    EXPECT_EQ(invalidUtf8Offset("\u00E9"), std::nullopt);
    EXPECT_EQ(invalidUtf8Offset(std::string(1, '\0')), std::nullopt);
    EXPECT_EQ(invalidUtf8Offset("\u00E9\xC3"), 2u);
}

TEST(Version, IsExported) {
    EXPECT_EQ(KestrelidVersionNumber, 1.0);
    EXPECT_STREQ(reinterpret_cast<const char*>(KestrelidVersionString),
                 "@(#)PROGRAM:Kestrelid  PROJECT:Tidewharf-1\n");
}

}  // namespace
}  // namespace kestrelid::detection
