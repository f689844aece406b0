#include "tests/detection/RandomText.h"
#include "tests/support/FakeServices.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/PassportDetector.h>

#include <gtest/gtest.h>
#include <random>

namespace kestrelid::detection {
namespace {

struct Answer {
    PassportValidationResult result;
    std::size_t linesRead;
};

Answer judge(const std::vector<std::string>& lines, ValidationEffort effort) {
    const auto queue = std::make_shared<test::ManualQueue>();
    const auto text = std::make_shared<test::FakeText>(lines);
    const auto detector =
        PassportDetector::create({.rectangles = std::make_shared<test::FakeRectangles>(
                                      std::vector{test::rectangleOf(0.5, 0.5)}),
                                  .text = text,
                                  .queue = queue},
                                 effort);
    std::optional<PassportValidationResult> answer;
    detector->validate(Image(test::blankBitmap(8, 8)),
                       [&](const auto& result) { answer = result; });
    queue->runAll();
    return {answer.value(), text->linesRead};
}

TEST(VerdictOnly, AgreesWithCompleteOnRandomLines) {
    std::mt19937 engine(4242);
    int stoppedEarly = 0;
    int passports = 0;
    for (int round = 0; round < 2000; ++round) {
        std::vector<std::string> lines(engine() % 9);
        for (std::string& line : lines)
            line = test::randomText(engine, 4);
        const Answer complete = judge(lines, ValidationEffort::complete);
        const Answer quick = judge(lines, ValidationEffort::verdictOnly);
        ASSERT_EQ(quick.result.isPassport(), complete.result.isPassport()) << "round " << round;
        ASSERT_EQ(quick.result.confidence(), complete.result.confidence()) << "round " << round;
        ASSERT_EQ(complete.linesRead, lines.size());
        stoppedEarly += quick.linesRead < lines.size();
        passports += complete.result.isPassport();
    }
    EXPECT_GT(stoppedEarly, 200);
    EXPECT_GT(passports, 200);
    EXPECT_LT(passports, 1800);
}

TEST(VerdictOnly, StopsOnceThreeEntriesHaveMatchedWithinLines) {
    // "BIRTH" alone matches the two short entries; the phrase that straddles both lines does not
    // count for stopping.
    EXPECT_EQ(
        judge({"NATIONALITY", "SURNAME", "AUTHORITY"}, ValidationEffort::verdictOnly).linesRead,
        2u);
    EXPECT_EQ(judge({"PASSPORT", "SURNAME"}, ValidationEffort::verdictOnly).linesRead, 1u);
    EXPECT_EQ(
        judge({"GIVENXXXXX", "NAMESXXXXX", "SURNAME"}, ValidationEffort::verdictOnly).linesRead,
        3u);
}

}  // namespace
}  // namespace kestrelid::detection
