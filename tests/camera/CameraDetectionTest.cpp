#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakePixelBuffer;
using testing::ElementsAre;
using testing::IsEmpty;

// Frames at these times, in seconds after the first; which of them are judged.
struct ThrottleCase {
    const char* name;
    std::vector<double> frames;
    std::vector<double> judged;
};

void PrintTo(const ThrottleCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraThrottle : public testing::TestWithParam<ThrottleCase> {};

TEST_P(CameraThrottle, JudgesAtMostOneFrameInHalfASecond) {
    const ThrottleCase& row = GetParam();
    CameraHarness camera;
    camera.becomeReady();
    const double start = camera.seconds;
    std::vector<double> judged;
    for (const double offset : row.frames) {
        camera.seconds = start + offset;
        const std::size_t before = camera.detector->images.size();
        camera.deliverFrame();
        if (camera.detector->images.size() > before)
            judged.push_back(offset);
    }
    EXPECT_EQ(judged, row.judged);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraThrottle,
    testing::Values(
        ThrottleCase{"FirstFrameAtOnce", {0.0}, {0.0}},
        ThrottleCase{
            "EverySecondOfFramesThatFollowEach300Ms", {0.0, 0.3, 0.6, 0.9, 1.2}, {0.0, 0.6, 1.2}},
        ThrottleCase{"HalfASecondExactlyPasses", {0.0, 0.5, 1.0, 1.5}, {0.0, 0.5, 1.0, 1.5}},
        ThrottleCase{"JustBeforeHalfASecondDoesNot", {0.0, 0.4999, 0.5}, {0.0, 0.5}},
        ThrottleCase{"ClockSetBackDropsUntilItHasCaughtUp",
                     {10.0, 0.0, 5.0, 10.0, 10.4, 10.5},
                     {10.0, 10.5}},
        ThrottleCase{"ClockSetForwardPassesAtOnce", {0.0, 3600.0, 3600.1}, {0.0, 3600.0}}),
    [](const auto& given) { return std::string(given.param.name); });

TEST(CameraFrames, AreJudgedWholeAndAsTheSensorSeesThem) {
    CameraHarness camera;
    camera.becomeReady();
    camera.deliverFrame(std::make_shared<FakePixelBuffer>(test::blankBitmap(1280, 720)));
    ASSERT_EQ(camera.detector->images.size(), 1u);
    const Image& image = camera.detector->images.front();
    EXPECT_EQ(image.orientation(), Orientation::up);
    EXPECT_EQ(image.bitmap()->width(), 1280);
    EXPECT_EQ(image.bitmap()->height(), 720);
}

TEST(CameraFrames, WithoutPixelsUseUpTheInterval) {
    for (const auto& frame : {std::shared_ptr<const FakePixelBuffer>(),
                              std::make_shared<const FakePixelBuffer>(std::nullopt)}) {
        CameraHarness camera;
        camera.becomeReady();
        camera.deliverFrame(frame);
        camera.seconds += 0.4;
        camera.deliverFrame();
        EXPECT_THAT(camera.detector->images, IsEmpty());
        camera.seconds += 0.1;
        camera.deliverFrame();
        EXPECT_EQ(camera.detector->images.size(), 1u);
        EXPECT_EQ(camera.manager->isDocumentDetected().value(), false);
    }
}

// A walk through the detection table in docs/camera.md: verdicts, and the state after each of them.
struct SmoothingCase {
    const char* name;
    std::vector<bool> verdicts;
    std::vector<bool> states;
    int changes;
};

void PrintTo(const SmoothingCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraSmoothing : public testing::TestWithParam<SmoothingCase> {};

TEST_P(CameraSmoothing, FollowsTheVerdicts) {
    const SmoothingCase& row = GetParam();
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    std::vector<bool> states;
    for (const bool verdict : row.verdicts) {
        camera.judge(verdict, verdict ? 0.1 : 0.9);
        states.push_back(camera.manager->isDocumentDetected().value());
    }
    EXPECT_EQ(states, row.states);
    const auto announced = camera.announced();
    const auto confidences =
        std::count_if(announced.begin(), announced.end(), [](const std::string& line) {
            return line.starts_with("detectionConfidence");
        });
    EXPECT_EQ(confidences, std::ssize(row.verdicts)) << "one announcement for each verdict";
    EXPECT_EQ(std::ssize(announced) - confidences, row.changes);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraSmoothing,
    testing::Values(
        SmoothingCase{"AbsentAppearsAtOnce", {true}, {true}, 1},
        SmoothingCase{"AbsentStaysAbsent", {false, false, false}, {false, false, false}, 0},
        SmoothingCase{"PresentStaysPresent", {true, true, true}, {true, true, true}, 1},
        SmoothingCase{"OneMissIsForgiven", {true, false, true, false}, {true, true, true, true}, 1},
        SmoothingCase{"TwoMissesInARowEndIt", {true, false, false}, {true, true, false}, 2},
        SmoothingCase{"MissesBeforeDoNotCount",
                      {false, true, false, true, false, false, true},
                      {false, true, true, true, true, false, true},
                      3}),
    [](const auto& given) { return std::string(given.param.name); });

TEST(CameraSmoothing, ConfidenceIsThatOfTheLastVerdict) {
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    camera.judge(true, 0.25);
    camera.judge(false, 0.75);
    camera.judge(false, 0.75);
    EXPECT_THAT(camera.announced(),
                ElementsAre("isDocumentDetected = true", "detectionConfidence = 0.25",
                            "detectionConfidence = 0.75", "isDocumentDetected = false",
                            "detectionConfidence = 0.75"));
}

TEST(CameraVerdicts, ArePublishedOnTheMainQueueInTheOrderOfArrival) {
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    camera.deliverFrame();
    camera.seconds += 0.5;
    camera.deliverFrame();
    camera.detector->answer(1, false, 0.5);
    camera.detector->answer(0, true, 1.0);
    EXPECT_THAT(camera.announced(), IsEmpty()) << "published on the detector's thread";
    camera.settle();
    EXPECT_THAT(camera.announced(),
                ElementsAre("detectionConfidence = 0.50", "isDocumentDetected = true",
                            "detectionConfidence = 1.00"));
}

TEST(CameraVerdicts, AfterTheManagerHasGoneChangeNothing) {
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    camera.deliverFrame();
    const std::weak_ptr<CameraManager> weak = camera.manager;
    camera.manager.reset();
    EXPECT_TRUE(weak.expired()) << "a validation under way keeps the manager";
    camera.detector->answer(0, true, 1.0);
    EXPECT_EQ(camera.mainQueue->waiting(), 0u);
    EXPECT_THAT(camera.announced(), IsEmpty());
}

TEST(CameraVerdicts, OutlastASessionSetUpAgain) {
    CameraHarness camera;
    camera.becomeReady();
    camera.judge(true, 1.0);
    camera.platform->session.lock()->lose();
    camera.becomeReady();
    EXPECT_TRUE(camera.manager->isDocumentDetected().value());
    camera.judge(false, 0.0);
    EXPECT_TRUE(camera.manager->isDocumentDetected().value());
}

}  // namespace
}  // namespace kestrelid::camera
