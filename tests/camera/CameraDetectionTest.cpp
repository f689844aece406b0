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

TEST(CameraFrames, AreJudgedAtMostOnceInHalfASecond) {
    const ThrottleCase cases[] = {
        {"first frame at once", {0.0}, {0.0}},
        {"every second of frames each 300 ms", {0.0, 0.3, 0.6, 0.9, 1.2}, {0.0, 0.6, 1.2}},
        {"half a second exactly passes", {0.0, 0.5, 1.0, 1.5}, {0.0, 0.5, 1.0, 1.5}},
        {"just before half a second does not", {0.0, 0.4999, 0.5}, {0.0, 0.5}},
        {"clock set back", {10.0, 0.0, 5.0, 10.0, 10.4, 10.5}, {10.0, 10.5}},
        {"clock set forward", {0.0, 3600.0, 3600.1}, {0.0, 3600.0}},
    };
    for (const ThrottleCase& row : cases) {
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
        EXPECT_EQ(judged, row.judged) << row.name;
    }
}

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

// A walk through the detection table in docs/camera.md: verdicts, and the state after each.
struct SmoothingCase {
    const char* name;
    std::vector<bool> verdicts;
    std::vector<bool> states;
    std::size_t changes;  // each is announced, as is the confidence of each verdict
};

TEST(CameraVerdicts, AreSmoothed) {
    const SmoothingCase cases[] = {
        {"appears at once", {true}, {true}, 1},
        {"stays absent", {false, false, false}, {false, false, false}, 0},
        {"stays present", {true, true, true}, {true, true, true}, 1},
        {"one miss is forgiven", {true, false, true, false}, {true, true, true, true}, 1},
        {"two misses in a row end it", {true, false, false}, {true, true, false}, 2},
        {"misses before do not count",
         {false, true, false, true, false, false, true},
         {false, true, true, true, true, false, true},
         3},
    };
    for (const SmoothingCase& row : cases) {
        SCOPED_TRACE(row.name);
        CameraHarness camera;
        camera.becomeReady();
        camera.announcements.clear();
        std::vector<bool> states;
        for (const bool verdict : row.verdicts) {
            camera.judge(verdict, verdict ? 0.25 : 0.75);
            states.push_back(camera.manager->isDocumentDetected().value());
            EXPECT_EQ(camera.announcements.back(),
                      verdict ? "detectionConfidence = 0.25" : "detectionConfidence = 0.75");
        }
        EXPECT_EQ(states, row.states);
        EXPECT_EQ(camera.announcements.size(), row.verdicts.size() + row.changes);
    }
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
