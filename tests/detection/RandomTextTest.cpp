#include "tests/detection/RandomText.h"
#include "detection/EditDistance.h"
#include "detection/KeywordTable.h"
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

}  // namespace
}  // namespace kestrelid::detection
