#include "vision/text/CtcReading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrelid::vision {
namespace {

constexpr char kBlank = '\0';

std::size_t classOf(char character) {
    if (character == kBlank)
        return 0;
    return character == ' ' ? 95 : static_cast<std::size_t>(character - '!' + 1);
}

struct Step {
    char first;
    float share = 0.9f;
    char second = kBlank;  // has the rest
};

TEST(CtcReading, IsTheBestPath) {
    const struct {
        const char* name;
        std::vector<Step> steps;
        std::string text;
        float confidence;
    } rows[] = {{"noSteps", {}, "", 0.0f},
                {"repeatsCollapse", {{'P'}, {'P'}, {'<'}}, "P<", 0.9f},
                {"aBlankPartsEqualLetters", {{'A'}, {kBlank}, {'A', 0.7f}}, "AA", 0.8f},
                {"spacesInsideStay", {{' '}, {'x'}, {' '}, {'9'}, {' '}}, "x 9", 0.9f},
                {"theFirstAndTheLastCharacter", {{'!'}, {'~'}}, "!~", 0.9f},
                {"theLikelierOfTwo", {{'O', 0.4f, '0'}}, "0", 0.6f},
                {"aBlankIsNoCharacter", {{kBlank, 0.6f, 'I'}}, "", 0.0f}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<float> probabilities;
        for (const Step& step : row.steps) {
            std::vector<float> classes(kTextClasses, 0.0f);
            classes[classOf(step.second)] += 1.0f - step.share;
            classes[classOf(step.first)] += step.share;
            probabilities.insert(probabilities.end(), classes.begin(), classes.end());
        }
        const auto [text, confidence] = bestPath(probabilities);
        EXPECT_EQ(text, row.text);
        EXPECT_NEAR(confidence, row.confidence, 1e-4f);
    }
}

}  // namespace
}  // namespace kestrelid::vision
