#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestCamera.h"
#include "tests/capture/TestFiles.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>

namespace kestrelid::capture {
namespace {

using namespace test;
using namespace std::chrono_literals;

const std::string kSmall = "caps video/x-raw,format=YUY2,width=320,height=240,framerate=30/1\n";
const std::string kLarge = "caps video/x-raw,format=YUY2,width=640,height=480,framerate=30/1\n";

bool switchTo(const CaptureRig& rig, const std::string& name) {
    const auto device = rig.platform->videoDevice(name);
    if (!device)
        throw std::runtime_error("no camera " + name);
    return rig.session->replaceInput(
        std::get<std::shared_ptr<CaptureInput>>(rig.platform->makeInput(device)));
}

void expectFrames(CaptureRig& rig, int width) {
    EXPECT_TRUE(rig.session->isRunning()) << rig.session->status().cause;
    const int shown = rig.shown->count();
    const int taken = rig.taken->count();
    EXPECT_TRUE(eventually([&] {
        return rig.shown->count() > shown + 5 && rig.taken->count() > taken + 2;
    })) << "the preview and the delegate stay";
    EXPECT_EQ(rig.shown->last().width(), width);
    EXPECT_TRUE(eventually([&] { return rig.session->status().state == CameraState::live; }));
    rig.answers->log.clear();
    rig.takePhotos(1);
    const auto photo = rig.photos(1).at(0);
    ASSERT_EQ(photo.error, "");
    EXPECT_EQ(std::get<Image>(decodeImage(photo.file)).bitmap()->width(), width);
}

TEST(Switch, GoesOnWithAnotherCameraWhateverTheOldOneIsDoing) {
    struct Row {
        const char* name;
        const char* trouble;  // of the old one
        bool isLost;
        bool takesPhoto;
    };
    for (const Row& row : {Row{"live", "", false, false}, Row{"takes a photo", "", false, true},
                           Row{"is lost", "unplugged", true, false},
                           Row{"silent within a photo", "stall-after 0", false, true},
                           Row{"hangs in its driver", "hang", false, false}}) {
        SCOPED_TRACE(row.name);
        test::TestCamera cameras("device New\n" + kSmall + "device Old\n" + kLarge);
        Patience patience = Patience().times(5);
        patience.finish = 300ms;
        CaptureRig rig(cameraNamed("Old"), patience);
        ASSERT_EQ(rig.start(), "");
        ASSERT_TRUE(eventually([&] { return rig.shown->count() > 2; }));
        cameras.set(row.trouble);
        ASSERT_TRUE(eventually([&] { return !row.isLost || !rig.session->isRunning(); }));
        if (row.takesPhoto)
            rig.takePhotos(2);
        ASSERT_TRUE(switchTo(rig, "New"));
        EXPECT_EQ(rig.photos(row.takesPhoto ? 2 : 0).size(), row.takesPhoto ? 2u : 0u);
        expectFrames(rig, 320);
        cameras.unset(row.trouble);
        EXPECT_TRUE(eventually([&] {
            return cameras.count("opened ") - cameras.count("closed ") == 1;
        })) << "the old one is let go";
        EXPECT_TRUE(switchTo(rig, "New"));
        EXPECT_EQ(cameras.count("opened New"), 1) << "the same one is not opened again";
        ASSERT_TRUE(eventually([&] { return rig.platform->videoDevice("Old") != nullptr; }));
        EXPECT_TRUE(switchTo(rig, "Old"));
        expectFrames(rig, 640);
    }
}

TEST(Switch, ToACameraThatDoesNotOpenIsToldAndTheWayBackIsOpen) {
    for (const char* failure : {"fail open", "fail start"}) {
        SCOPED_TRACE(failure);
        test::TestCamera cameras("device Old\n" + kLarge + "device New\n" + kSmall + failure);
        CaptureRig rig(cameraNamed("Old"));
        ASSERT_EQ(rig.start(), "");
        ASSERT_TRUE(eventually([&] { return rig.taken->count() > 0 && rig.shown->count() > 0; }));
        ASSERT_TRUE(switchTo(rig, "New"));
        EXPECT_FALSE(rig.session->isRunning());
        EXPECT_TRUE(eventually([&] { return rig.session->status().cause.starts_with("The cam"); }));
        EXPECT_EQ(rig.session->status().state, CameraState::failed);
        EXPECT_TRUE(rig.photoOutput->connections().empty());
        const int judged = rig.taken->count();
        EXPECT_TRUE(eventually([&] { return rig.taken->count() > judged + 2; }))
            << "the old one's page goes out of view";
        const Bitmap last = rig.shown->last();
        EXPECT_TRUE(std::all_of(last.row(200), last.row(201),
                                [](std::byte value) { return value == std::byte(0); }));
        EXPECT_TRUE(switchTo(rig, "Old"));
        expectFrames(rig, 640);
    }
}

TEST(Switch, KnowsACameraFromItsTwinWhichHasTheNameOnceItIsUnplugged) {
    test::TestCamera cameras("device A\ncalled Twin\n" + kLarge + "device B\ncalled Twin\n" +
                             kSmall);
    CaptureRig rig(cameraNamed("Twin"));
    ASSERT_EQ(rig.start(), "");
    ASSERT_EQ(cameras.count("opened A"), 1);
    cameras.set("device A\nunplugged");
    ASSERT_TRUE(eventually([&] { return !rig.session->isRunning(); }));
    ASSERT_TRUE(switchTo(rig, "Twin"));
    expectFrames(rig, 320);
    cameras.unset("device A\nunplugged");
    ASSERT_TRUE(eventually([&] { return rig.platform->cameras().size() == 2; }));
    ASSERT_TRUE(switchTo(rig, "Twin"));
    ASSERT_TRUE(switchTo(rig, "Twin 2"));
    EXPECT_EQ(cameras.count("opened "), 3) << "one of the two was open already";
}

TEST(CameraList, TellsWhatComesAndGoesWhileSomebodyListens) {
    test::TestCamera cameras("device Stays\ndevice Goes\n");
    CameraOptions options;
    options.isMirrored = true;
    options.orientation = Orientation::left;
    GStreamerCapturePlatform platform(options);
    const std::string own = platform.defaultVideoDevice()->name();
    const std::string other = own == "Stays" ? "Goes" : "Stays";
    EXPECT_TRUE(platform.videoDevice(own)->isMirrored());
    EXPECT_EQ(platform.videoDevice(own)->orientation(), Orientation::left);
    EXPECT_FALSE(platform.videoDevice(other)->isMirrored()) << "it was not chosen by the options";
    EXPECT_EQ(platform.videoDevice(other)->orientation(), Orientation::up);

    std::atomic<int> told = 0;
    std::atomic<int> toldInVain = 0;
    const auto listening = platform.observeCameras([&] { ++told; });
    auto ended = platform.observeCameras([&] { ++toldInVain; });
    cameras.set("unplugged");
    EXPECT_TRUE(eventually([&] { return told == 1 && toldInVain == 1; }));
    EXPECT_EQ(platform.cameras().size(), 1u);
    EXPECT_FALSE(platform.videoDevice("Goes"));
    ended.reset();
    cameras.unset("unplugged");
    EXPECT_TRUE(eventually([&] { return told == 2; }));
    EXPECT_EQ(platform.cameras().size(), 2u);
    EXPECT_EQ(toldInVain, 1);

    const TemporaryFolder folder;
    ASSERT_FALSE(writeImage(folder / "page.png", Image(drawing(32, 24))));
    GStreamerCapturePlatform ofFile(cameraNamed((folder / "page.png").string()));
    EXPECT_TRUE(ofFile.observeCameras([] { FAIL(); }));
    ASSERT_EQ(ofFile.cameras().size(), 1u);
    EXPECT_TRUE(ofFile.videoDevice("page.png"));
    EXPECT_FALSE(ofFile.videoDevice("Stays"));
}

}  // namespace
}  // namespace kestrelid::capture
