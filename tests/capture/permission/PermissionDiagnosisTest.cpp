#include "capture/permission/CameraPermission.h"
#include "tests/capture/permission/FakePortal.h"
#include "tests/capture/permission/NodeFolder.h"

#include <gmock/gmock.h>

namespace kestrelid::test {
namespace {

using testing::HasSubstr;

TEST(PermissionDiagnosis, NamesTheGroupThatANodeAsksFor) {
    const NodeFolder folder;
    folder.add("video3", 0);
    const NodeFolder open;
    open.add("video4", 0666);
    const Unprivileged user;
    if (!user.isBound())
        GTEST_SKIP() << "root cannot drop its rights here; run as an ordinary user";
    const auto found = capture::diagnosePermission({.devices = folder.path()});
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.details, HasSubstr("video3"));
    EXPECT_THAT(found.details, HasSubstr("usermod -aG"));
    EXPECT_TRUE(capture::diagnosePermission({.devices = open.path()}).available);
}

struct Desktop {
    std::optional<PortalBehaviour> portal;  // absent: no bus
    bool available;
    const char* details;
};

TEST(PermissionDiagnosis, SaysWhatToDoInASandbox) {
    for (const Desktop& row : {Desktop{PortalBehaviour{.stored = "yes"}, true, "granted"},
                               Desktop{PortalBehaviour{.stored = "no"}, false, "settings"},
                               Desktop{PortalBehaviour{}, true, "asks"},
                               Desktop{PortalBehaviour{.hasCamera = false}, true, "no camera"},
                               Desktop{std::nullopt, false, "xdg-desktop-portal"}}) {
        SCOPED_TRACE(row.details);
        const PrivateBus bus;
        const NodeFolder folder;
        std::optional<FakePortal> portal;
        if (row.portal)
            portal.emplace(bus.address(), *row.portal);
        const auto found = capture::diagnosePermission(
            {.isSandboxed = true,
             .applicationId = "org.example.Host",
             .devices = folder.path(),
             .busAddress = row.portal ? bus.address() : "unix:path=/nonexistent",
             .queryLimit = std::chrono::minutes(1),
             .statusLimit = std::chrono::minutes(1)});
        EXPECT_EQ(found.available, row.available);
        EXPECT_THAT(found.details, HasSubstr(row.details));
    }
}

}  // namespace
}  // namespace kestrelid::test
