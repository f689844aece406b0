#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakeMachine;
using testing::ElementsAre;
using testing::IsEmpty;

using Operations = std::vector<std::string>;

const Operations kFailed{"beginConfiguration", "setSessionPreset photo", "commitConfiguration"};

// Where the camera opens.
Operations operations(bool withPhotos, bool withVideo) {
    Operations all{"beginConfiguration", "setSessionPreset photo", "addInput"};
    if (withPhotos)
        all.insert(all.end(), {"addOutput photo"});
    if (withVideo)
        all.insert(all.end(), {"setVideoSettings", "setSampleBufferDelegate", "addOutput video"});
    all.insert(all.end(), {"commitConfiguration", "startRunning"});
    return all;
}

// A row of the session table in docs/camera.md.
struct SessionCase {
    const char* name;
    bool FakeMachine::*lacks;
    Operations operations;
    Operations atOnce;  // published before the second is over
    Operations afterASecond;
};

TEST(CameraSession, EndsIn) {
    const Operations ready{"isSessionReady = true"};
    const Operations notReady{"isSessionReady = false"};
    const SessionCase cases[] = {
        {"starts", nullptr, operations(true, true), {}, ready},
        {"no camera", &FakeMachine::hasDevice, kFailed, notReady, {}},
        {"camera does not open", &FakeMachine::deviceOpens, kFailed, notReady, {}},
        {"input refused", &FakeMachine::takesInput, kFailed, notReady, {}},
        {"no photo output", &FakeMachine::takesPhotoOutput, operations(false, true), {}, ready},
        {"no video output", &FakeMachine::takesVideoOutput, operations(true, false), {}, ready},
        {"does not start", &FakeMachine::starts, operations(true, true), {}, notReady},
    };
    for (const SessionCase& row : cases) {
        SCOPED_TRACE(row.name);
        CameraHarness camera;
        if (row.lacks)
            camera.machine().*row.lacks = false;
        camera.manager->setupSession();
        EXPECT_THAT(camera.machine().log, IsEmpty()) << "configured on the caller's thread";
        camera.settle();
        EXPECT_EQ(camera.machine().log, row.operations);
        camera.mainQueue->advance(0.999);
        EXPECT_EQ(camera.announced(), row.atOnce);
        camera.mainQueue->advance(0.001);
        EXPECT_EQ(camera.announced(), row.afterASecond);
    }
}

TEST(CameraSession, SecondSetupIsRefusedAndTheSessionRunsOn) {
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

TEST(CameraSession, CameraThatComesBackIsSetUpAgain) {
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

TEST(CameraSession, SessionLostWithinTheFirstSecondIsNotReady) {
    CameraHarness camera;
    camera.manager->setupSession();
    camera.settle();
    camera.platform->session.lock()->lose();
    camera.mainQueue->advance(1.0);
    EXPECT_THAT(camera.announced(), ElementsAre("isSessionReady = false"));
}

TEST(CameraSession, ReleasedWithItsManagerAfterTheReadinessCheck) {
    CameraHarness camera;
    camera.manager->setupSession();
    camera.manager.reset();
    camera.settle();
    EXPECT_FALSE(camera.platform->session.expired()) << "the check one second later still needs it";
    camera.mainQueue->advance(1.0);
    EXPECT_TRUE(camera.platform->session.expired());
    EXPECT_TRUE(camera.platform->videoOutput.expired());
}

TEST(CameraSession, AsksForBgraOnQueuesOfItsOwn) {
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
