#include "capture/permission/CameraPermission.h"
#include "tests/capture/permission/NodeFolder.h"

#include <future>
#include <utility>
#include <vector>

namespace kestrelid::test {
namespace {

struct Nodes {
    const char* name;
    std::vector<std::pair<const char*, unsigned>> modes;
    AuthorizationStatus status;
};

void PrintTo(const Nodes& nodes, std::ostream* stream) {
    *stream << nodes.name;
}

class DeviceNodes : public testing::TestWithParam<Nodes> {};

TEST_P(DeviceNodes, DecideOutsideASandbox) {
    const NodeFolder folder;
    for (const auto& [name, mode] : GetParam().modes)
        folder.add(name, mode);
    const auto authorization = capture::makeCameraAuthorization({.devices = folder.path()});
    std::promise<bool> granted;
    {
        const Unprivileged user;
        if (!user.isBound())
            GTEST_SKIP() << "root cannot drop its rights here; run as an ordinary user";
        EXPECT_EQ(authorization->status(), GetParam().status);
        authorization->requestAccess([&](bool answer) { granted.set_value(answer); });
    }
    EXPECT_EQ(granted.get_future().get(), GetParam().status == AuthorizationStatus::authorized);
}

INSTANTIATE_TEST_SUITE_P(
    Folders, DeviceNodes,
    testing::Values(
        Nodes{"none", {}, AuthorizationStatus::authorized},
        Nodes{"opens", {{"video0", 0666}}, AuthorizationStatus::authorized},
        Nodes{"refuses", {{"video0", 0}}, AuthorizationStatus::denied},
        Nodes{"readableOnly", {{"video0", 0444}}, AuthorizationStatus::denied},
        Nodes{"oneOfTwo", {{"video0", 0}, {"video12", 0666}}, AuthorizationStatus::authorized},
        Nodes{"allRefuse", {{"video0", 0}, {"video12", 0}}, AuthorizationStatus::denied},
        Nodes{"otherDevices",
              {{"video", 0}, {"video1x", 0}, {"v4l-subdev0", 0}},
              AuthorizationStatus::authorized}),
    [](const auto& row) { return row.param.name; });

TEST(DeviceNodes, AMissingFolderIsNoMatterOfPermission) {
    EXPECT_EQ(capture::makeCameraAuthorization({.devices = "/nonexistent"})->status(),
              AuthorizationStatus::authorized);
}

TEST(FileAuthorization, GrantsLater) {
    capture::FileAuthorization authorization;
    EXPECT_EQ(authorization.status(), AuthorizationStatus::authorized);
    std::promise<std::thread::id> answered;
    authorization.requestAccess([&](bool granted) {
        EXPECT_TRUE(granted);
        answered.set_value(std::this_thread::get_id());
    });
    EXPECT_TRUE(answered.get_future().get() != std::this_thread::get_id());
}

}  // namespace
}  // namespace kestrelid::test
