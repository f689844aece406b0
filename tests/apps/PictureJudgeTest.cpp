#include "apps/cli/PictureJudge.h"
#include "apps/cli/OutlineRecorder.h"

#include "tests/apps/FakeServices.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kestrelid::cli {
namespace {

RectangleObservation outline(double width, double height, float confidence = 1.0f) {
    RectangleObservation observation;
    observation.boundingBox = {0.1, 0.1, width, height};
    observation.confidence = confidence;
    return observation;
}

TEST(ChosenOutlineTest, IsTheLargestAndOfEqualsTheFirst) {
    EXPECT_FALSE(chosenOutline({}));
    const std::vector<RectangleObservation> outlines{
        outline(0.2, 0.2, 0.9f), outline(0.5, 0.4, 0.5f), outline(0.4, 0.5, 0.8f)};
    const auto chosen = chosenOutline(outlines);
    ASSERT_TRUE(chosen);
    EXPECT_EQ(chosen->confidence, 0.5f);
}

struct PictureJudgeTest : testing::Test {
    std::shared_ptr<FakeRectangles> rectangles = std::make_shared<FakeRectangles>();
    std::shared_ptr<FakeText> text = std::make_shared<FakeText>();
    PictureJudge judge{fakeServices(rectangles, text), ValidationEffort::complete};
    const std::filesystem::path sample =
        std::filesystem::path(KESTRELID_SOURCE_DIR) / "samples/bangladesh-on-wood.jpg";
};

TEST_F(PictureJudgeTest, GivesVerdictAndOutlinesOfEachPictureAlone) {
    rectangles->found = {outline(0.8, 0.8), outline(0.5, 0.4)};
    JudgeResult first = judge.judge(sample);
    ASSERT_TRUE(std::holds_alternative<JudgedPicture>(first));
    const auto& passport = std::get<JudgedPicture>(first);
    EXPECT_TRUE(passport.result.isPassport());
    EXPECT_EQ(passport.outlines.size(), 2u);
    EXPECT_EQ(passport.image.bitmap()->width(), rectangles->width);
    EXPECT_EQ(passport.image.bitmap()->height(), rectangles->height);
    EXPECT_GT(passport.milliseconds, 0.0);

    rectangles->found.clear();
    JudgeResult second = judge.judge(sample);
    ASSERT_TRUE(std::holds_alternative<JudgedPicture>(second));
    EXPECT_FALSE(std::get<JudgedPicture>(second).result.isPassport());
    EXPECT_TRUE(std::get<JudgedPicture>(second).outlines.empty());
}

TEST_F(PictureJudgeTest, CallsFailedRecognitionAnErrorAndRecovers) {
    text->error = RequestError{"no such library"};
    const JudgeResult failed = judge.judge(sample);
    ASSERT_TRUE(std::holds_alternative<JudgeError>(failed));
    EXPECT_NE(std::get<JudgeError>(failed).cause.find("no such library"), std::string::npos);

    text->error.reset();
    EXPECT_TRUE(std::holds_alternative<JudgedPicture>(judge.judge(sample)));
}

TEST_F(PictureJudgeTest, SaysWhyAPictureCannotBeDecoded) {
    const JudgeResult result = judge.judge(std::as_bytes(std::span("not a picture")));
    ASSERT_TRUE(std::holds_alternative<JudgeError>(result));
    EXPECT_FALSE(std::get<JudgeError>(result).cause.empty());
}

}  // namespace
}  // namespace kestrelid::cli
