#include "capture/permission/CameraPermission.h"
#include "tests/capture/permission/NodeFolder.h"

#include <gtest/gtest.h>

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

TEST(DeviceNodes, DecideOutsideASandbox) {
    using enum AuthorizationStatus;
    for (const Nodes& row :
         {Nodes{"none", {}, authorized}, Nodes{"readable only", {{"video0", 0444}}, denied},
          Nodes{"one of two", {{"video0", 0}, {"video12", 0666}}, authorized},
          Nodes{"other devices", {{"video", 0}, {"video1x", 0}, {"v4l-subdev0", 0}}, authorized}}) {
        SCOPED_TRACE(row.name);
        const NodeFolder folder;
        for (const auto& [name, mode] : row.modes)
            folder.add(name, mode);
        const auto authorization = capture::makeCameraAuthorization({.devices = folder.path()});
        std::promise<bool> granted;
        {
            const Unprivileged user;
            if (!user.isBound())
                GTEST_SKIP() << "root cannot drop its rights here; run as an ordinary user";
            EXPECT_EQ(authorization->status(), row.status);
            authorization->requestAccess([&](bool answer) { granted.set_value(answer); });
        }
        EXPECT_EQ(granted.get_future().get(), row.status == authorized);
    }
    EXPECT_EQ(capture::makeCameraAuthorization({.devices = "/nonexistent"})->status(), authorized);
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
