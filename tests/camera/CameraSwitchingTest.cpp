#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakeMachine;
using testing::ElementsAre;
using testing::IsEmpty;

CameraDescription camera(const std::string& name, bool isPresent = true) {
    return {.name = name,
            .formats = {{.width = 640, .height = 480, .framesPerSecond = 30, .encoding = "raw"}},
            .isPresent = isPresent};
}

// A row: one of the switching table in docs/camera.md.
TEST(CameraSwitching, DependsOnWhatTheSessionIsDoing) {
    using Flag = bool FakeMachine::*;
    struct Case {
        const char* name;
        const char* chosen;
        bool isFirst;  // before any set-up
        Flag lacksAtSetup;
        Flag lacksThen;
        const char* lastOperation;
        const char* current;
        std::vector<std::string> published;  // from then on
        CameraState state;
    };
    const std::vector<std::string> ready{"isSessionReady = true"};
    const auto live = CameraState::live;
    for (const Case& row : {
             Case{"not set up", "Back", true, {}, {}, "startRunning", "Back", ready, live},
             {"no such camera yet",
              "Roof",
              true,
              {},
              {},
              "startRunning",
              "Fake camera",
              ready,
              live},
             {"running", "Back", false, {}, {}, "replaceInput Back", "Back", {}, live},
             {"no such camera", "Roof", false, {}, {}, "startRunning", "Fake camera", {}, live},
             {"a session that cannot",
              "Back",
              false,
              {},
              &FakeMachine::replacesInput,
              "startRunning",
              "Fake camera",
              {},
              live},
             {"no input can be made",
              "Back",
              false,
              {},
              &FakeMachine::deviceOpens,
              "startRunning",
              "Fake camera",
              {},
              live},
             {"does not open",
              "Back",
              false,
              {},
              &FakeMachine::starts,
              "replaceInput Back",
              "Back",
              {"isSessionReady = false"},
              CameraState::failed},
             {"did not start",
              "Back",
              false,
              &FakeMachine::starts,
              {},
              "replaceInput Back",
              "Back",
              ready,
              live},
             {"had no camera",
              "Back",
              false,
              &FakeMachine::hasDevice,
              {},
              "startRunning",
              "Back",
              ready,
              live},
         }) {
        SCOPED_TRACE(row.name);
        CameraHarness harness;
        FakeMachine& machine = harness.machine();
        machine.cameras = {camera("Back")};
        if (row.lacksAtSetup)
            machine.*row.lacksAtSetup = false;
        if (row.isFirst) {
            harness.manager->switchCamera(row.chosen);
            harness.settle();
            EXPECT_THAT(machine.log, IsEmpty());
        }
        harness.manager->setupSession();
        harness.settle();
        if (!row.isFirst) {
            harness.mainQueue->advance(1.0);
            harness.announcements.clear();
            if (row.lacksAtSetup)
                machine.*row.lacksAtSetup = true;
            if (row.lacksThen)
                machine.*row.lacksThen = false;
            harness.manager->switchCamera(row.chosen);
            harness.settle();
        }
        EXPECT_EQ(machine.log.back(), row.lastOperation);
        EXPECT_EQ(harness.manager->currentCamera().value(), row.current);
        EXPECT_THAT(harness.announced(), IsEmpty());
        harness.mainQueue->advance(1.0);
        EXPECT_EQ(harness.announced(), row.published);
        EXPECT_EQ(harness.manager->cameraStatus().value().state, row.state);
    }
}

TEST(CameraSwitching, SetUpAgainItLooksForTheChosenCameraAndThenForTheUsualOne) {
    CameraHarness harness;
    harness.machine().cameras = {camera("Back")};
    harness.becomeReady();
    harness.manager->switchCamera("Back");
    harness.settle();
    for (const char* expected : {"Back", "Fake camera"}) {
        harness.platform->session.lock()->lose();
        harness.becomeReady();
        EXPECT_EQ(harness.manager->currentCamera().value(), expected);
        harness.machine().cameras.clear();
    }
}

TEST(CameraSwitching, CamerasArePublishedOnAChangeAndThoseUnpluggedStayAtTheEnd) {
    CameraHarness harness;
    FakeMachine& machine = harness.machine();
    std::vector<std::vector<CameraDescription>> lists;
    const auto listening =
        harness.manager->cameras().didChange([&](const auto& list) { lists.push_back(list); });
    machine.cameras = {camera("Back"), camera("Front")};
    harness.becomeReady();
    const auto become = [&](std::vector<CameraDescription> present) {
        machine.cameras = std::move(present);
        for (int telling = 0; telling < 3; ++telling)
            machine.camerasChanged();
        harness.settle();
    };
    become({camera("Back"), camera("Front")});
    become({camera("Front")});
    become({camera("Desk"), camera("Front")});
    harness.becomeReady();  // a second set-up
    become({camera("Back"), camera("Front")});
    EXPECT_THAT(lists,
                ElementsAre(ElementsAre(camera("Back"), camera("Front")),
                            ElementsAre(camera("Front"), camera("Back", false)),
                            ElementsAre(camera("Desk"), camera("Front"), camera("Back", false)),
                            ElementsAre(camera("Back"), camera("Front"), camera("Desk", false))));

    const auto late = machine.camerasChanged;
    harness.mainQueue->advance(1.0);
    harness.manager.reset();
    harness.settle();
    EXPECT_FALSE(machine.camerasChanged) << "nobody listens any more";
    late();
    harness.settle();
    EXPECT_EQ(lists.size(), 4u);
}

}  // namespace
}  // namespace kestrelid::camera
