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
    const Unprivileged user;
    if (!user.isBound())
        GTEST_SKIP() << "root cannot drop its rights here; run as an ordinary user";
    const auto found = capture::diagnosePermission({.devices = folder.path()});
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.details, HasSubstr("video3"));
    EXPECT_THAT(found.details, HasSubstr("usermod -aG"));
}

TEST(PermissionDiagnosis, IsContentWithNodesThatOpenAndWithNone) {
    const NodeFolder folder;
    EXPECT_TRUE(capture::diagnosePermission({.devices = folder.path()}).available);
    folder.add("video0", 0666);
    const auto found = capture::diagnosePermission({.devices = folder.path()});
    EXPECT_TRUE(found.available);
    EXPECT_THAT(found.details, HasSubstr("video0"));
}

struct Desktop {
    const char* name;
    PortalBehaviour behaviour;
    bool available;
    const char* details;
};

void PrintTo(const Desktop& desktop, std::ostream* stream) {
    *stream << desktop.name;
}

class DesktopDiagnosis : public testing::TestWithParam<Desktop> {};

TEST_P(DesktopDiagnosis, SaysWhatToDo) {
    const PrivateBus bus;
    const NodeFolder folder;
    const FakePortal portal(bus.address(), GetParam().behaviour);
    const auto found = capture::diagnosePermission({.isSandboxed = true,
                                                    .applicationId = "org.example.Host",
                                                    .devices = folder.path(),
                                                    .busAddress = bus.address()});
    EXPECT_EQ(found.available, GetParam().available);
    EXPECT_THAT(found.details, HasSubstr(GetParam().details));
}

INSTANTIATE_TEST_SUITE_P(Desktops, DesktopDiagnosis,
                         testing::Values(Desktop{"granted", {.stored = "yes"}, true, "granted"},
                                         Desktop{"refused", {.stored = "no"}, false, "settings"},
                                         Desktop{"asks", {}, true, "asks"},
                                         Desktop{
                                             "noCamera", {.hasCamera = false}, true, "no camera"}),
                         [](const auto& row) { return row.param.name; });

TEST(PermissionDiagnosis, MissesThePortal) {
    const NodeFolder folder;
    const auto found = capture::diagnosePermission({.isSandboxed = true,
                                                    .applicationId = "org.example.Host",
                                                    .devices = folder.path(),
                                                    .busAddress = "unix:path=/nonexistent"});
    EXPECT_FALSE(found.available);
    EXPECT_THAT(found.details, HasSubstr("xdg-desktop-portal"));
}

}  // namespace
}  // namespace kestrelid::test
