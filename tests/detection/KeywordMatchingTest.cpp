#include "detection/EditDistance.h"
#include "detection/KeywordTable.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"

#include <gmock/gmock.h>
#include <string>

namespace kestrelid::detection {
namespace {

using testing::Contains;
using testing::ElementsAre;

TEST(Normalize, Cleans) {
    const struct {
        const char* name;
        std::string raw;
        std::string cleaned;
    } rows[] = {{"empty", "", ""},
                {"lineFeedsBecomeSingleSpaces", "Date\n\nof  Birth\n", "DATE OF BIRTH"},
                {"punctuationVanishesWithoutGap", "SUR-NAME P.A.S.S", "SURNAME PASS"},
                {"tabAndCarriageReturnVanish", "PASS\tPORT\r\nNO", "PASSPORT NO"},
                {"zoneCharactersStay", "p<utoo'neil>>", "P<UTOO'NEIL>>"},
                {"composedAccentFolds", "R\u00C9PUBLIQUE", "REPUBLIQUE"},
                {"illFormedBytesDoNotMeet", "I\xCD\xCD\x91\xA9", "I"},
                {"illFormedBytesVanish",
                 "A\xFF\xC3"
                 "B",
                 "AB"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(normalize(row.raw), row.cleaned);
    }
}

TEST(MatchKeywords, ListsMisspeltAndRepeatedEntriesInTableOrder) {
    EXPECT_EQ(passportKeywords().size(), 30u);
    EXPECT_THAT(passportKeywords(), Contains("DATE OF ISSUEx"));
    for (const char* repeated : {"PASSPORT", "BANGLADESH", "DATE OF BIRTH", "NATIONALITY"})
        EXPECT_THAT(passportKeywords(), Contains(repeated).Times(2));
    EXPECT_THAT(matchKeywords(passportKeywords(), "PASSPORT"),
                ElementsAre(KeywordMatch{"PASSPORT", 0}, KeywordMatch{"PASSEPORT", 1},
                            KeywordMatch{"PASAPORTE", 2}, KeywordMatch{"PASSPORT", 0}));
}

TEST(FuzzyDistance, ComparesWithNoRunLongerThanTheKeywordAndEight) {
    EXPECT_EQ(fuzzyDistance("BGD", "12345678901"), 11);
    EXPECT_EQ(fuzzyDistance("BGD", "123456789012"), kNoDistance);
    EXPECT_EQ(fuzzyDistance("BGD", "123456789012 BGD"), 0);
    // The same where a mark joins the space before it, so that words cannot be counted one by one.
    EXPECT_EQ(fuzzyDistance("ABCDEFGHIJKL", "ABCDEFGHIJKL12345678 \u0301"), 8);
    EXPECT_EQ(fuzzyDistance("ABCDEFGHIJKL", "ABCDEFGHIJKL123456789 \u0301"), 12);
    EXPECT_EQ(fuzzyDistance("", "BGD"), kNoDistance);
    EXPECT_EQ(fuzzyDistance("BGD", ""), kNoDistance);
}

TEST(EditDistance, ComparesCharactersByCanonicalEquivalence) {
    EXPECT_EQ(editDistance("", ""), 0);
    EXPECT_EQ(editDistance("", "\U0001F469\u0301\u200D\U0001F467"), 1);  // a mark before the joiner
    EXPECT_EQ(editDistance("", "\U0001F469x\u200D\U0001F467"), 3);
    EXPECT_EQ(editDistance("ab", ""), 2);
    EXPECT_EQ(editDistance("caf\u00E9", "cafe\u0301"), 0);
    EXPECT_EQ(editDistance(std::string(63, 'a'), std::string(65, 'a')), 2);
    EXPECT_EQ(editDistance(std::string(64, 'a'), std::string(128, 'a')), 64);
    EXPECT_EQ(editDistance(std::string(130, 'a') + "b", "c" + std::string(130, 'a')), 2);
}

}  // namespace
}  // namespace kestrelid::detection
