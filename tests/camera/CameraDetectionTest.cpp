#include "tests/camera/CameraHarness.h"
#include "tests/support/FakeServices.h"

#include "defaults/CameraDetector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakePixelBuffer;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(CameraFrames, AreJudgedAtMostOnceInHalfASecond) {
    struct Case {
        std::vector<double> frames;  // seconds
        std::vector<double> judged;
    };
    for (const Case& row : {Case{{0.0, 0.3, 0.4999, 0.5, 1.0}, {0.0, 0.5, 1.0}},
                            Case{{10.0, 0.0, 5.0, 10.0, 10.4, 10.5}, {10.0, 10.5}},
                            Case{{0.0, 3600.0, 3600.1}, {0.0, 3600.0}}}) {
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
        EXPECT_EQ(camera.detector->images.front().bitmap()->width(), 12);
        EXPECT_EQ(camera.detector->images.front().orientation(), Orientation::up);
    }
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

TEST(CameraFrames, AreLeftToTheNextOneWhileNoneCanBeJudged) {
    CameraHarness camera;
    camera.becomeReady();
    camera.canJudge = false;
    camera.deliverFrame();
    EXPECT_THAT(camera.detector->images, IsEmpty());
    camera.canJudge = true;
    camera.seconds += 0.03;
    camera.deliverFrame();
    EXPECT_EQ(camera.detector->images.size(), 1u) << "it cost no interval";
}

TEST(CameraDetector, CanJudgeSoManyFramesAtOnceAndNoneBesideAPictureOfTheHost) {
    const auto queue = std::make_shared<test::ManualQueue>();
    PlatformServices services = test::noServices();
    services.queue = queue;
    int pages = 0;
    auto detector = defaults::CameraDetector::create(services, 2, [&] { return pages; });
    int verdicts = 0;
    const Image frame(test::blankBitmap(12, 8));
    const auto validate = [&] {
        detector->validate(frame, [&](const PassportValidationResult&) { ++verdicts; });
    };
    pages = 1;
    EXPECT_FALSE(detector->canJudge()) << "the host's";
    pages = 0;
    validate();
    EXPECT_TRUE(detector->canJudge());
    validate();
    EXPECT_FALSE(detector->canJudge());
    queue->runAll();
    EXPECT_EQ(verdicts, 2);
    EXPECT_TRUE(detector->canJudge());

    validate();
    validate();
    const auto other = defaults::CameraDetector::create(services, 2, {});
    EXPECT_TRUE(other->canJudge());
    EXPECT_FALSE(detector->canJudge());
    queue->clear();
    EXPECT_TRUE(detector->canJudge()) << "given up without a verdict";
}

// A walk through every row of the detection table in docs/camera.md.
TEST(CameraVerdicts, AreSmoothed) {
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    std::vector<bool> states;
    for (const bool verdict : {false, true, false, true, true, false, false, false, true}) {
        camera.judge(verdict, verdict ? 0.25 : 0.75);
        states.push_back(camera.manager->isDocumentDetected().value());
        EXPECT_EQ(camera.announcements.back(),
                  verdict ? "detectionConfidence = 0.25" : "detectionConfidence = 0.75");
    }
    EXPECT_EQ(states, (std::vector{false, true, true, true, true, true, false, false, true}));
    EXPECT_EQ(camera.announcements.size(), states.size() + 3) << "only changes are announced";
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

struct FakeZones final : ZoneService {
    ZoneResult perform(const Bitmap&, const ZoneRequest& request) override {
        outlines.push_back(request.outlines.size());
        return isInView ? ZoneResult(std::vector{zone}) : ZoneResult();
    }
    bool isInView = true;
    ZoneReading zone;
    std::vector<std::size_t> outlines;  // of each request
};

TEST(CameraZones, AreReadBesideTheVerdictsAndForgottenWithThePage) {
    const auto zones = std::make_shared<FakeZones>();
    for (const std::string_view line : {"P<UTOERIKSSON<<ANNA<MARIA<<<<<<<<<<<<<<<<<<<",
                                        "L898902C36UTO7408122F1204159ZE184226B<<<<<10"}) {
        zones->zone.lines.emplace_back();
        for (const char character : line)
            zones->zone.lines.back().characters.push_back({.choices = {{{character, 0.98f}}}});
    }
    CameraHarness camera(AuthorizationStatus::authorized, zones);
    camera.becomeReady();
    std::vector<int> frames;
    const auto watched = camera.manager->zone().didChange([&](const LiveZone& zone) {
        frames.push_back(zone.isStrict() ? zone.frames : -zone.frames);
    });
    const auto deliver = [&](int count) {
        for (int frame = 0; frame < count; ++frame, camera.seconds += 0.1)
            camera.deliverFrame();
    };
    deliver(4);  // looked at: the first and the third
    EXPECT_THAT(frames, ElementsAre(-1, 2));
    EXPECT_THAT(zones->outlines, ElementsAre(0, 1)) << "first anywhere, then where it stood";
    EXPECT_EQ(camera.detector->images.size(), 1u) << "verdicts come as they do without";
    zones->isInView = false;
    deliver(6);
    EXPECT_THAT(frames, ElementsAre(-1, 2, 0));
    EXPECT_FALSE(camera.manager->zone().value().zone);
    zones->isInView = true;
    deliver(1);
    EXPECT_TRUE(camera.manager->zone().value().zone);
    camera.pass(2.0);
    EXPECT_FALSE(camera.manager->zone().value().zone);
}

}  // namespace
}  // namespace kestrelid::camera
