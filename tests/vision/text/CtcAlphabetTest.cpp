#include "vision/text/CtcAlphabet.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::vision {
namespace {

// A recogniser's dictionary in small: other scripts around the characters of English.
constexpr std::string_view kEnglish =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz<";

std::string dictionary() {
    std::string lines = "\u4e2d\n";
    for (const char character : kEnglish)
        lines += std::string(1, character) + "\n";
    return lines + "\u6587\n\uff1a\n\u2019";
}

constexpr std::size_t kBlank = 0;
constexpr std::size_t kForeign = 1;  // the first line
constexpr std::size_t classOf(char character) {
    return 2 + kEnglish.find(character);
}
constexpr std::size_t kWideColon = classOf('<') + 2;
constexpr std::size_t kApostrophe = kWideColon + 1;
constexpr std::size_t kSpace = kApostrophe + 1;

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

TEST(CtcAlphabet, DecodesTheBestPath) {
    const struct {
        const char* name;
        std::vector<Step> steps;
        std::string text;
        float confidence;
    } rows[] = {
        {"noSteps", {}, "", 0.0f},
        {"repeatsCollapse", {{classOf('P')}, {classOf('P')}, {classOf('<')}}, "P<", 0.9f},
        {"aBlankPartsEqualLetters", {{classOf('A')}, {kBlank}, {classOf('A'), 0.7f}}, "AA", 0.8f},
        {"spacesInsideStay",
         {{kSpace}, {classOf('x')}, {kSpace}, {classOf('9')}, {kSpace}},
         "x 9",
         0.9f},
        {"anotherScriptGivesWayToALetter", {{kForeign, 0.8f, classOf('C')}}, "C", 0.2f},
        {"anotherScriptAloneIsNothing", {{kForeign, 1.0f}}, "", 0.0f},
        {"wideFormsAndQuotesAreAscii", {{kWideColon}, {kBlank}, {kApostrophe}}, ":'", 0.9f}};
    const auto alphabet = CtcAlphabet::parse(dictionary());
    ASSERT_TRUE(alphabet);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto [text, confidence] = alphabet->decode(probabilities(*alphabet, row.steps));
        EXPECT_EQ(text, row.text);
        EXPECT_NEAR(confidence, row.confidence, 1e-4f);
    }
}

TEST(CtcAlphabet, CountsBlankAndSpaceBesidesTheDictionary) {
    // A line end after the last entry is not an entry.
    for (const char* end : {"", "\n"}) {
        const auto alphabet = CtcAlphabet::parse(dictionary() + end);
        ASSERT_TRUE(alphabet);
        EXPECT_EQ(alphabet->classCount(), kSpace + 1);
    }
}

TEST(CtcAlphabet, RefusesADictionaryWithoutEnglish) {
    EXPECT_FALSE(CtcAlphabet::parse(""));
    std::string withoutQ = dictionary();
    withoutQ.replace(withoutQ.find('Q'), 1, "\u6587");
    EXPECT_FALSE(CtcAlphabet::parse(withoutQ));
}

}  // namespace
}  // namespace kestrelid::vision
