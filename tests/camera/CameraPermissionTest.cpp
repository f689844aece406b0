#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using testing::ElementsAre;
using testing::IsEmpty;

// A row of the permission table in docs/camera.md.
struct PermissionCase {
    const char* name;
    AuthorizationStatus status;
    std::optional<bool> answer;  // of the person who is asked; none: nobody is, or not yet
    std::vector<std::string> announced;
    std::size_t requests;
    bool configures;
};

TEST(CameraPermission, LeadsTo) {
    using enum AuthorizationStatus;
    const std::vector<std::string> yes{"isAuthorized = true"};
    const std::vector<std::string> no{"isAuthorized = false"};
    const PermissionCase cases[] = {
        {"authorized", authorized, {}, yes, 0, true},
        {"denied", denied, {}, no, 0, false},
        {"restricted", restricted, {}, no, 0, false},
        {"asked and granted", notDetermined, true, yes, 1, true},
        {"asked and refused", notDetermined, false, no, 1, false},
    };
    for (const PermissionCase& row : cases) {
        SCOPED_TRACE(row.name);
        CameraHarness camera(row.status);
        EXPECT_THAT(camera.machine().log, IsEmpty()) << "creating touched the camera";

        camera.manager->checkAuthorization();
        EXPECT_EQ(camera.authorization->requests(), row.requests);
        if (row.answer) {
            camera.authorization->answer(*row.answer);
            EXPECT_THAT(camera.announced(), IsEmpty()) << "published on the platform's thread";
        }
        camera.settle();
        EXPECT_EQ(camera.announced(), row.announced);
        EXPECT_EQ(!camera.machine().log.empty(), row.configures);
        EXPECT_EQ(camera.manager->cameraStatus().value().state,
                  row.configures ? CameraState::live : CameraState::denied);
    }
}

TEST(CameraPermission, QuestionUnderWayKeepsTheManager) {
    CameraHarness camera(AuthorizationStatus::notDetermined);
    const std::weak_ptr<CameraManager> weak = camera.manager;
    camera.manager->checkAuthorization();
    camera.manager.reset();
    ASSERT_FALSE(weak.expired());
    camera.authorization->answer(false);
    ASSERT_FALSE(weak.expired()) << "released before the answer was published";
    camera.mainQueue->runAll();
    EXPECT_TRUE(weak.expired());
    EXPECT_THAT(camera.announced(), ElementsAre("isAuthorized = false"));
}

TEST(CameraPermission, RefusalMayReleaseTheManager) {
    CameraHarness camera(AuthorizationStatus::denied);
    const std::weak_ptr<CameraManager> weak = camera.manager;
    const auto subscription =
        camera.manager->isAuthorized().didChange([&](bool) { camera.manager.reset(); });
    camera.manager->checkAuthorization();
    EXPECT_TRUE(weak.expired());
}

TEST(CameraManagerCreation, NeedsEveryService) {
    CameraHarness camera;
    const CameraServices complete{
        .authorization = camera.authorization,
        .capture = camera.platform,
        .detector = camera.detector,
        .mainQueue = camera.mainQueue,
        .makeSerialQueue = [](const std::string&) { return nullptr; },
    };
    std::vector<CameraServices> gaps(5, complete);
    gaps[0].authorization = nullptr;
    gaps[1].capture = nullptr;
    gaps[2].detector = nullptr;
    gaps[3].mainQueue = nullptr;
    gaps[4].makeSerialQueue = nullptr;
    EXPECT_NE(CameraManager::create(complete), nullptr);
    for (const CameraServices& services : gaps)
        EXPECT_EQ(CameraManager::create(services), nullptr);
}

}  // namespace
}  // namespace kestrelid::camera
