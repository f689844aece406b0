#include "tests/detection/RandomText.h"
#include "detection/EditDistance.h"
#include "detection/KeywordTable.h"
#include "detection/MrzLikeLines.h"
#include "detection/NormalizedText.h"
#include "detection/PassportKeywords.h"
#include "tests/reference/PlainTextRules.h"

#include <gtest/gtest.h>

namespace kestrelid::detection {
namespace {

TEST(RandomText, NormalizesAndMatchesAsThePlainRules) {
    std::mt19937 engine(20240611);
    for (int round = 0; round < 400; ++round) {
        const std::string raw = test::randomText(engine, 12);
        ASSERT_TRUE(reference::knows(raw)) << raw;
        const std::string cleaned = normalize(raw);
        ASSERT_EQ(cleaned, reference::normalize(raw)) << "round " << round;
        ASSERT_EQ(matchKeywords(passportKeywords(), cleaned),
                  reference::matchKeywords(passportKeywords(), cleaned))
            << "round " << round << ": " << cleaned;
    }
}

TEST(RandomText, ComparesUncleanedTextAsThePlainRules) {
    // Empty words between neighbouring spaces, keywords of any script.
    std::mt19937 engine(7);
    for (int round = 0; round < 600; ++round) {
        const std::string keyword = test::randomText(engine, 3);
        const std::string text = test::randomText(engine, 8);
        ASSERT_EQ(fuzzyDistance(keyword, text), reference::fuzzyDistance(keyword, text))
            << "round " << round << ": " << keyword << " | " << text;
        ASSERT_EQ(editDistance(keyword, text), reference::editDistance(keyword, text))
            << "round " << round;
    }
}

TEST(RandomText, FindsZoneLinesAsThePlainRules) {
    std::mt19937 engine(99);
    int found = 0;
    for (int round = 0; round < 3000; ++round) {
        const std::string text = test::randomZoneText(engine);
        ASSERT_TRUE(reference::knows(text)) << text;
        const MrzLikeLines answer = detectMRZLikeLines(text);
        ASSERT_EQ(answer, reference::mrzLikeLines(text)) << answer.reason << "\n" << text;
        found += answer.found;
    }
    EXPECT_GT(found, 300);  // the texts reach both answers
    EXPECT_LT(found, 2700);
}

}  // namespace
}  // namespace kestrelid::detection
