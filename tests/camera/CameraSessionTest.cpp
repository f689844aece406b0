#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakeMachine;
using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> kFailed{"beginConfiguration", "setSessionPreset photo",
                                       "commitConfiguration"};

// A row of the session table in docs/camera.md.
struct SessionCase {
    const char* name;
    std::function<void(FakeMachine&)> prepare;
    std::vector<std::string> operations;
    std::vector<std::string> atOnce;  // published before the second is over
    std::vector<std::string> afterASecond;
};

void PrintTo(const SessionCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraSession : public testing::TestWithParam<SessionCase> {};

TEST_P(CameraSession, EndsIn) {
    const SessionCase& row = GetParam();
    CameraHarness camera;
    row.prepare(camera.machine());

    camera.manager->setupSession();
    EXPECT_THAT(camera.machine().log, IsEmpty()) << "configured on the caller's thread";
    camera.settle();
    EXPECT_EQ(camera.machine().log, row.operations);
    camera.mainQueue->advance(0.999);
    EXPECT_EQ(camera.announced(), row.atOnce);
    camera.mainQueue->advance(0.001);
    EXPECT_EQ(camera.announced(), row.afterASecond);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraSession,
    testing::Values(SessionCase{"Starts",
                                [](FakeMachine&) {},
                                {"beginConfiguration", "setSessionPreset photo", "addInput",
                                 "addOutput photo", "setVideoSettings", "setSampleBufferDelegate",
                                 "addOutput video", "commitConfiguration", "startRunning"},
                                {},
                                {"isSessionReady = true"}},
                    SessionCase{"NoCamera",
                                [](FakeMachine& machine) { machine.hasDevice = false; },
                                kFailed,
                                {"isSessionReady = false"},
                                {}},
                    SessionCase{"CameraDoesNotOpen",
                                [](FakeMachine& machine) { machine.deviceOpens = false; },
                                kFailed,
                                {"isSessionReady = false"},
                                {}},
                    SessionCase{"InputRefused",
                                [](FakeMachine& machine) { machine.takesInput = false; },
                                kFailed,
                                {"isSessionReady = false"},
                                {}},
                    SessionCase{"NoPhotoOutput",
                                [](FakeMachine& machine) { machine.takesPhotoOutput = false; },
                                {"beginConfiguration", "setSessionPreset photo", "addInput",
                                 "setVideoSettings", "setSampleBufferDelegate", "addOutput video",
                                 "commitConfiguration", "startRunning"},
                                {},
                                {"isSessionReady = true"}},
                    SessionCase{"NoVideoOutput",
                                [](FakeMachine& machine) { machine.takesVideoOutput = false; },
                                {"beginConfiguration", "setSessionPreset photo", "addInput",
                                 "addOutput photo", "commitConfiguration", "startRunning"},
                                {},
                                {"isSessionReady = true"}},
                    SessionCase{"DoesNotStart",
                                [](FakeMachine& machine) { machine.starts = false; },
                                {"beginConfiguration", "setSessionPreset photo", "addInput",
                                 "addOutput photo", "setVideoSettings", "setSampleBufferDelegate",
                                 "addOutput video", "commitConfiguration", "startRunning"},
                                {},
                                {"isSessionReady = false"}}),
    [](const auto& given) { return std::string(given.param.name); });

TEST(CameraSessionAgain, SecondSetupIsRefusedAndTheSessionRunsOn) {
    CameraHarness camera;
    camera.becomeReady();
    camera.announcements.clear();
    camera.machine().log.clear();

    camera.manager->setupSession();
    camera.settle();
    EXPECT_EQ(camera.machine().log, kFailed);
    EXPECT_THAT(camera.announced(), ElementsAre("isSessionReady = false"));
    EXPECT_TRUE(camera.platform->session.lock()->isRunning());
    camera.deliverFrame();
    EXPECT_EQ(camera.detector->images.size(), 1u) << "live detection goes on";
}

TEST(CameraSessionAgain, CameraThatComesBackIsSetUpAgain) {
    CameraHarness camera;
    camera.becomeReady();
    camera.platform->session.lock()->lose();
    EXPECT_TRUE(camera.manager->isSessionReady().value()) << "a loss alone publishes nothing";
    camera.announcements.clear();
    camera.machine().log.clear();

    camera.becomeReady();
    EXPECT_THAT(camera.machine().log,
                ElementsAre("beginConfiguration", "setSessionPreset photo", "addInput",
                            "commitConfiguration", "startRunning"))
        << "the outputs are still there";
    EXPECT_THAT(camera.announced(), ElementsAre("isAuthorized = true", "isSessionReady = true"));
}

TEST(CameraSessionAgain, SessionLostWithinTheFirstSecondIsNotReady) {
    CameraHarness camera;
    camera.manager->setupSession();
    camera.settle();
    camera.platform->session.lock()->lose();
    camera.mainQueue->advance(1.0);
    EXPECT_THAT(camera.announced(), ElementsAre("isSessionReady = false"));
}

TEST(CameraSessionLifetime, ReleasedWithItsManagerAfterTheReadinessCheck) {
    CameraHarness camera;
    camera.manager->setupSession();
    camera.manager.reset();
    camera.settle();
    EXPECT_FALSE(camera.platform->session.expired()) << "the check one second later still needs it";
    camera.mainQueue->advance(1.0);
    EXPECT_TRUE(camera.platform->session.expired());
    EXPECT_TRUE(camera.platform->videoOutput.expired());
}

TEST(CameraSessionConfiguration, AsksForBgraOnQueuesOfItsOwn) {
    CameraHarness camera;
    camera.becomeReady();
    const auto output = camera.platform->videoOutput.lock();
    EXPECT_EQ(output->settings->pixelFormat, 0x42475241u);
    EXPECT_EQ(output->queue, camera.queues.at("video.frame.queue"));
    EXPECT_EQ(camera.queues.count("camera.session.queue"), 1u);
    EXPECT_EQ(camera.queues.size(), 2u);
}

}  // namespace
}  // namespace kestrelid::camera
