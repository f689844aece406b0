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

void PrintTo(const PermissionCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraPermission : public testing::TestWithParam<PermissionCase> {};

TEST_P(CameraPermission, LeadsTo) {
    const PermissionCase& row = GetParam();
    CameraHarness camera(row.status);
    EXPECT_THAT(camera.machine().log, IsEmpty()) << "creating touched the camera";

    camera.manager->checkAuthorization();
    const std::size_t requests = camera.authorization->requests();
    if (row.answer) {
        camera.authorization->answer(*row.answer);
        EXPECT_THAT(camera.announced(), IsEmpty()) << "published on the platform's thread";
    }
    camera.settle();

    EXPECT_EQ(camera.announced(), row.announced);
    EXPECT_EQ(requests, row.requests);
    EXPECT_EQ(!camera.machine().log.empty(), row.configures);
}

INSTANTIATE_TEST_SUITE_P(Table, CameraPermission,
                         testing::Values(PermissionCase{"Authorized",
                                                        AuthorizationStatus::authorized,
                                                        std::nullopt,
                                                        {"isAuthorized = true"},
                                                        0,
                                                        true},
                                         PermissionCase{"Denied",
                                                        AuthorizationStatus::denied,
                                                        std::nullopt,
                                                        {"isAuthorized = false"},
                                                        0,
                                                        false},
                                         PermissionCase{"Restricted",
                                                        AuthorizationStatus::restricted,
                                                        std::nullopt,
                                                        {"isAuthorized = false"},
                                                        0,
                                                        false},
                                         PermissionCase{"AskedAndUnanswered",
                                                        AuthorizationStatus::notDetermined,
                                                        std::nullopt,
                                                        {},
                                                        1,
                                                        false},
                                         PermissionCase{"AskedAndGranted",
                                                        AuthorizationStatus::notDetermined,
                                                        true,
                                                        {"isAuthorized = true"},
                                                        1,
                                                        true},
                                         PermissionCase{"AskedAndRefused",
                                                        AuthorizationStatus::notDetermined,
                                                        false,
                                                        {"isAuthorized = false"},
                                                        1,
                                                        false}),
                         [](const auto& given) { return std::string(given.param.name); });

TEST(CameraPermissionLifetime, QuestionUnderWayKeepsTheManager) {
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

TEST(CameraPermissionLifetime, PermissionTakenAwayIsSeenAtTheNextCheck) {
    CameraHarness camera;
    camera.becomeReady();
    camera.authorization->answer(false);
    camera.announcements.clear();
    camera.manager->checkAuthorization();
    camera.settle();
    EXPECT_THAT(camera.announced(), ElementsAre("isAuthorized = false"));
    EXPECT_TRUE(camera.platform->session.lock()->isRunning()) << "nothing stops a session";
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
    const std::vector<void (*)(CameraServices&)> gaps{
        [](CameraServices& services) { services.authorization = nullptr; },
        [](CameraServices& services) { services.capture = nullptr; },
        [](CameraServices& services) { services.detector = nullptr; },
        [](CameraServices& services) { services.mainQueue = nullptr; },
        [](CameraServices& services) { services.makeSerialQueue = nullptr; }};
    EXPECT_NE(CameraManager::create(complete), nullptr);
    for (const auto& gap : gaps) {
        CameraServices services = complete;
        gap(services);
        EXPECT_EQ(CameraManager::create(services), nullptr);
    }
}

}  // namespace
}  // namespace kestrelid::camera
