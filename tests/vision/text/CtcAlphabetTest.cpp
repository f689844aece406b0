#include "vision/text/CtcAlphabet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrelid::vision {
namespace {

// A recogniser's dictionary in small: other scripts between the characters of English.
constexpr std::string_view kBefore = "\u4e2d\n";
constexpr std::string_view kAfter = "<\n\u6587\n\uff1a\n\u2019";

std::string dictionary() {
    std::string lines(kBefore);
    for (const std::string_view range : {"09", "AZ", "az"})
        for (char character = range.front(); character <= range.back(); ++character)
            lines += std::string(1, character) + "\n";
    return lines + std::string(kAfter);
}

constexpr std::size_t kBlank = 0;
constexpr std::size_t kForeign = 1;  // the first line
std::size_t classOf(char character) {
    if (character >= '0' && character <= '9')
        return 2 + static_cast<std::size_t>(character - '0');
    if (character >= 'A' && character <= 'Z')
        return 12 + static_cast<std::size_t>(character - 'A');
    return 38 + static_cast<std::size_t>(character - 'a');
}
constexpr std::size_t kFiller = 64;
constexpr std::size_t kWideColon = 66;
constexpr std::size_t kApostrophe = 67;
constexpr std::size_t kSpace = 68;

struct Step {
    std::size_t first;
    float share = 0.9f;
    std::size_t second = kBlank;  // has the rest
};

std::vector<float> probabilities(const CtcAlphabet& alphabet, const std::vector<Step>& steps) {
    std::vector<float> values(steps.size() * alphabet.classCount(), 0.0f);
    for (std::size_t index = 0; index < steps.size(); ++index) {
        float* row = values.data() + index * alphabet.classCount();
        row[steps[index].second] += 1.0f - steps[index].share;
        row[steps[index].first] += steps[index].share;
    }
    return values;
}

struct DecodingRow {
    const char* name;
    std::vector<Step> steps;
    std::string text;
    float confidence;
};

TEST(CtcAlphabet, DecodesTheBestPath) {
    const DecodingRow rows[] = {
        {"noSteps", {}, "", 0.0f},
        {"blanksOnly", {{kBlank}, {kBlank}}, "", 0.0f},
        {"repeatsCollapse", {{classOf('A')}, {classOf('A')}, {classOf('B')}}, "AB", 0.9f},
        {"aBlankPartsEqualLetters", {{classOf('A')}, {kBlank}, {classOf('A'), 0.7f}}, "AA", 0.8f},
        {"spacesInsideStay",
         {{kSpace}, {classOf('x')}, {kSpace}, {classOf('9')}, {kSpace}},
         "x 9",
         0.9f},
        {"fillersStay", {{classOf('P')}, {kFiller}, {kBlank}, {kFiller}}, "P<<", 0.9f},
        {"anotherScriptGivesWayToALetter", {{kForeign, 0.8f, classOf('C')}}, "C", 0.2f},
        {"anotherScriptAloneIsNothing", {{kForeign, 1.0f}}, "", 0.0f},
        {"wideFormsAndQuotesAreAscii", {{kWideColon}, {kBlank}, {kApostrophe}}, ":'", 0.9f}};
    for (const DecodingRow& row : rows) {
        SCOPED_TRACE(row.name);
        const auto alphabet = CtcAlphabet::parse(dictionary());
        ASSERT_TRUE(alphabet);
        const auto [text, confidence] = alphabet->decode(probabilities(*alphabet, row.steps));
        EXPECT_EQ(text, row.text);
        EXPECT_NEAR(confidence, row.confidence, 1e-4f);
    }
}

TEST(CtcAlphabet, CountsBlankAndSpaceBesidesTheDictionary) {
    const auto unix = CtcAlphabet::parse(dictionary());
    ASSERT_TRUE(unix);
    EXPECT_EQ(unix->classCount(), kSpace + 1);
    const auto closed = CtcAlphabet::parse(dictionary() + "\n");
    ASSERT_TRUE(closed);
    EXPECT_EQ(closed->classCount(), unix->classCount())
        << "a line end after the last entry is not an entry";
}

TEST(CtcAlphabet, RefusesADictionaryWithoutEnglish) {
    EXPECT_FALSE(CtcAlphabet::parse(""));
    EXPECT_FALSE(CtcAlphabet::parse("\u4e2d\n\u6587\n"));
    std::string withoutQ = dictionary();
    withoutQ.replace(withoutQ.find('Q'), 1, "\u6587");
    EXPECT_FALSE(CtcAlphabet::parse(withoutQ));
}

}  // namespace
}  // namespace kestrelid::vision
