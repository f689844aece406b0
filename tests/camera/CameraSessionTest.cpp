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

const Operations kStarted{"beginConfiguration", "setSessionPreset photo", "addInput",
                          "addOutput photo",    "setVideoSettings",       "setSampleBufferDelegate",
                          "addOutput video",    "commitConfiguration",    "startRunning"};

Operations without(const std::vector<std::string>& skipped) {
    Operations rest = kStarted;
    for (const auto& operation : skipped)
        std::erase(rest, operation);
    return rest;
}

// A row: one of the session table in docs/camera.md.
TEST(CameraSession, EndsIn) {
    struct Case {
        const char* name;
        bool FakeMachine::*lacks;
        Operations operations;
        Operations atOnce;  // published before the second is over
        Operations afterASecond;
        CameraStatus camera;
    };
    const Operations ready{"isSessionReady = true"};
    const Operations notReady{"isSessionReady = false"};
    const Case cases[] = {
        {"starts", nullptr, kStarted, {}, ready, {CameraState::live, ""}},
        {"no camera", &FakeMachine::hasDevice, kFailed, notReady, {}, {CameraState::absent, ""}},
        {"camera does not open",
         &FakeMachine::deviceOpens,
         kFailed,
         notReady,
         {},
         {CameraState::failed, "in use by another program"}},
        {"input refused", &FakeMachine::takesInput, kFailed, notReady, {}, {}},
        {"no photo output",
         &FakeMachine::takesPhotoOutput,
         without({"addOutput photo"}),
         {},
         ready,
         {CameraState::live, ""}},
        {"no video output",
         &FakeMachine::takesVideoOutput,
         without({"setVideoSettings", "setSampleBufferDelegate", "addOutput video"}),
         {},
         ready,
         {CameraState::live, ""}},
        {"does not start", &FakeMachine::starts, kStarted, {}, notReady, {CameraState::failed, ""}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        CameraHarness camera;
        if (row.lacks)
            camera.machine().*row.lacks = false;
        camera.manager->setupSession();
        EXPECT_THAT(camera.machine().log, IsEmpty()) << "configured on the caller's thread";
        camera.settle();
        EXPECT_EQ(camera.machine().log, row.operations);
        EXPECT_EQ(camera.queues.count("camera.session.queue"), 1u);
        if (const auto output = camera.platform->videoOutput.lock(); output && output->settings) {
            EXPECT_EQ(output->settings->pixelFormat, 0x42475241u) << "BGRA";
            EXPECT_EQ(output->queue, camera.queues.at("video.frame.queue"));
        }
        camera.mainQueue->advance(0.999);
        EXPECT_EQ(camera.announced(), row.atOnce);
        camera.mainQueue->advance(0.001);
        EXPECT_EQ(camera.announced(), row.afterASecond);
        EXPECT_EQ(camera.manager->cameraStatus().value(), row.camera);
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
    camera.judge(true, 1.0);
    camera.platform->session.lock()->lose();
    camera.settle();
    EXPECT_TRUE(camera.manager->isSessionReady().value()) << "of a loss only the status tells";
    EXPECT_EQ(camera.manager->cameraStatus().value().cause, "unplugged");
    camera.announcements.clear();
    camera.machine().log.clear();

    camera.becomeReady();
    EXPECT_THAT(camera.machine().log,
                ElementsAre("beginConfiguration", "setSessionPreset photo", "addInput",
                            "commitConfiguration", "startRunning"))
        << "the outputs are still there";
    EXPECT_THAT(camera.announced(), ElementsAre("isAuthorized = true", "isSessionReady = true"));
    camera.judge(false, 0.0);
    EXPECT_TRUE(camera.manager->isDocumentDetected().value()) << "verdicts outlast a session";
}

TEST(CameraSession, ControlsAreToldOnAChangeAndSetOnTheSessionQueue) {
    CameraHarness camera;
    std::string told;
    const auto subscription = camera.manager->controls().didChange([&](const auto& controls) {
        told +=
            std::to_string(controls.size()) +
            (camera.manager->cameraStatus().value().state == CameraState::live ? " live;" : ";");
    });
    camera.manager->setControl(CameraControl::torch, 1.0);
    camera.becomeReady();
    const auto session = camera.platform->session.lock();
    for (const double value : {0.0, 0.0, 1.0}) {
        camera.machine().controls = {{.control = CameraControl::focus, .value = value}};
        session->tell();
        camera.settle();
    }
    camera.machine().log.clear();
    camera.manager->setControl(CameraControl::focus, std::nullopt);
    EXPECT_THAT(camera.machine().log, IsEmpty());
    camera.settle();
    EXPECT_THAT(camera.machine().log, ElementsAre("focus automatic"));
    session->lose();
    camera.settle();
    EXPECT_EQ(told, "1 live;1 live;0;");
    session->tell();
    camera.manager->setControl(CameraControl::zoom, 0.5);
    camera.manager.reset();
    camera.settle();
    EXPECT_EQ(camera.machine().log.back(), "zoom 0.50");
}

TEST(CameraSession, LostWithinTheFirstSecondIsNotReady) {
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
}

}  // namespace
}  // namespace kestrelid::camera
