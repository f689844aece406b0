#include "tests/capture/CaptureRig.h"
#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"

#include "capture/gstreamer/GStreamerLibrary.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace kestrelid::capture {
namespace {

using namespace test;
using namespace std::chrono_literals;

const std::string kSlowStills =
    "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1\n"
    "caps video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1\n";

PhotoDimensions sizeOf(const std::vector<std::byte>& file) {
    const ImageResult decoded = decodeImage(file);
    const auto* image = std::get_if<Image>(&decoded);
    return image ? PhotoDimensions{image->bitmap()->width(), image->bitmap()->height()}
                 : PhotoDimensions{};
}

TEST(Device, IsChosenByNameOrPosition) {
    {
        CaptureRig none({});
        EXPECT_EQ(none.start(), "no camera");
        EXPECT_FALSE(none.session->isRunning());
        EXPECT_TRUE(none.platform->cameras().empty());
    }

    const test::TestCamera cameras("device Desk\nproperty api.libcamera.location front\n"
                                   "device Lid\nproperty api.libcamera.location back\n");
    const CaptureRig any({});
    const auto all = any.platform->cameras();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].position, CameraPosition::back);
    EXPECT_EQ(any.platform->defaultVideoDevice()->name(), "Lid");
    CameraOptions front;
    front.position = CameraPosition::front;
    EXPECT_EQ(CaptureRig(front).platform->defaultVideoDevice()->name(), "Desk");
    for (const char* name : {"Desk", "Lid"}) {
        const auto device = CaptureRig(cameraNamed(name)).platform->defaultVideoDevice();
        ASSERT_TRUE(device) << name;
        EXPECT_EQ(device->name(), name);
    }
    EXPECT_FALSE(CaptureRig(cameraNamed("Roof")).platform->defaultVideoDevice());
}

TEST(Device, ShowsOneFormatAndTakesPhotosInTheLargest) {
    struct FormatCase {
        const char* name;
        std::string caps;
        int liveWidth;
        PhotoDimensions photo;
    };
    const FormatCase cases[] = {
        {"raw", kSlowStills, 1280, {1920, 1080}},
        {"raw frames, jpeg stills",
         "caps video/x-raw,format=NV12,width=640,height=480,framerate=30/1\n"
         "caps image/jpeg,width=1920,height=1080,framerate=15/1\n",
         640,
         {1920, 1080}},
    };
    for (const FormatCase& row : cases) {
        SCOPED_TRACE(row.name);
        const test::TestCamera camera("device Test Camera\n" + row.caps);
        CaptureRig rig({});
        rig.taken->keeps = 1;
        ASSERT_EQ(rig.start(), "");
        ASSERT_TRUE(eventually([&] { return rig.shown->count() > 2 && rig.taken->count() > 0; }));
        EXPECT_EQ(rig.taken->kept().at(0).format(), PixelFormat::bgra8);
        EXPECT_EQ(rig.shown->last().width(), row.liveWidth);
        EXPECT_EQ(rig.photoOutput->maxPhotoDimensions(), row.photo);
        for (const std::size_t wanted : {2u, 4u}) {
            rig.takePhotos(2);
            const PhotoAnswers::Log answers = rig.photos(wanted);
            ASSERT_EQ(answers.size(), wanted);
            for (const PhotoAnswers::Answer& answer : answers)
                EXPECT_EQ(sizeOf(answer.file), row.photo) << answer.error;
            const int before = rig.shown->count();
            EXPECT_TRUE(eventually([&] { return rig.shown->count() > before + 2; }));
            EXPECT_EQ(rig.shown->last().width(), row.liveWidth);
            EXPECT_TRUE(rig.session->isRunning());
        }
    }
}

TEST(Device, JpegPhotosAreTheCamerasOwnWithItsOrientation) {
    const test::TestCamera camera("device Test Camera\n"
                                  "property api.libcamera.rotation 270\n"
                                  "property api.libcamera.location front\n"
                                  "caps image/jpeg,width=640,height=480,framerate=30/1\n");
    CaptureRig rig({});
    ASSERT_EQ(rig.start(), "");
    EXPECT_EQ(rig.photoOutput->availablePhotoCodecTypes(),
              std::vector<std::string>{kPhotoCodecJpeg});
    rig.takePhotos(1);
    const ImageResult decoded = decodeImage(rig.photos(1).at(0).file);
    ASSERT_TRUE(std::holds_alternative<Image>(decoded));
    EXPECT_EQ(std::get<Image>(decoded).orientation(), Orientation::right);
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 0; }));
    EXPECT_EQ(rig.shown->orientation, Orientation::right);
    EXPECT_TRUE(rig.shown->isMirrored);
}

bool isBlack(const Bitmap& frame) {
    const std::vector<std::byte> black(static_cast<std::size_t>(frame.width()) *
                                       static_cast<std::size_t>(bytesPerPixel(frame.format())));
    for (int y = 0; y < frame.height(); ++y) {
        if (!std::equal(black.begin(), black.end(), frame.row(y)))
            return false;
    }
    return true;
}

TEST(Device, ThatIsLostGivesBlackFramesAndComesBackByItself) {
    for (const char* cause : {"unplugged", "unplugged error", "stall-after 0"}) {
        SCOPED_TRACE(cause);
        test::TestCamera camera;
        CaptureRig rig({});
        ASSERT_EQ(rig.start(), "");
        ASSERT_TRUE(eventually([&] { return rig.shown->count() > 0; }));
        camera.set(cause);
        ASSERT_TRUE(eventually([&] { return !rig.session->isRunning(); }));
        EXPECT_TRUE(rig.photoOutput->connections().empty());
        rig.takePhotos(1);
        EXPECT_NE(rig.photos(1).at(0).error, "");
        EXPECT_TRUE(eventually([&] { return isBlack(rig.shown->last()); }));
        const int judged = rig.taken->count();
        EXPECT_TRUE(eventually([&] { return rig.taken->count() > judged + 1; }));
        EXPECT_EQ(rig.session->status().state, CameraState::lost) << rig.session->status().cause;
        EXPECT_TRUE(camera.waitUntilClosed());

        camera.unset(cause);
        EXPECT_TRUE(
            eventually([&] { return rig.session->isRunning() && !isBlack(rig.shown->last()); }));
        EXPECT_TRUE(eventually([&] { return rig.session->status().state == CameraState::live; }));
        EXPECT_EQ(rig.start(), "") << "by hand as well";
        rig.takePhotos(1);
        EXPECT_EQ(rig.photos(2).at(1).error, "");
        EXPECT_FALSE(camera.count("opened ") > 10) << "pauses grow";
    }
}

TEST(Device, WhoseFramesAreDamagedIsToldAndNothingOfThemIsShown) {
    struct DamageCase {
        const char* caps;
        const char* damage;
    };
    for (const DamageCase& row :
         {DamageCase{"caps video/x-raw,format=YUY2,width=640,height=480,framerate=30/1\n",
                     "damage stride"},
          DamageCase{"caps image/jpeg,width=640,height=480,framerate=30/1\n", "damage truncated"},
          DamageCase{"caps image/jpeg,width=640,height=480,framerate=30/1\n", "damage empty"}}) {
        SCOPED_TRACE(std::string(row.caps) + row.damage);
        test::TestCamera camera(std::string("device Test Camera\n") + row.caps);
        CaptureRig rig({});
        ASSERT_EQ(rig.start(), "");
        ASSERT_TRUE(eventually([&] { return rig.shown->count() > 2; }));
        camera.set(row.damage);
        ASSERT_TRUE(eventually([&] { return !rig.session->status().cause.empty(); }));
        rig.takePhotos(1);
        EXPECT_NE(rig.photos(1).at(0).error, "");
        EXPECT_TRUE(eventually([&] { return isBlack(rig.shown->last()); })) << "as any lost one";
        camera.unset(row.damage);
        EXPECT_TRUE(eventually([&] {
            return rig.session->status() == CameraStatus{CameraState::live, {}} &&
                   !isBlack(rig.shown->last());
        }));
    }
}

TEST(Device, GivesAStillThatHasSettledOrALiveFrameWhereNoStillComes) {
    const auto photo = [](const CaptureRig& rig, std::size_t number) {
        const ImageResult decoded = decodeImage(rig.photos(number).at(number - 1).file);
        const auto* image = std::get_if<Image>(&decoded);
        return image ? image->bitmap() : std::nullopt;
    };
    test::TestCamera camera("device Test Camera\n"
                            "caps video/x-raw,format=YUY2,width=1280,height=960,framerate=30/1\n"
                            "caps video/x-raw,format=YUY2,width=1600,height=1200,framerate=30/1\n");
    Patience patience = Patience().times(5);
    patience.still = 4s;
    patience.settling = 10s;
    CaptureRig rig({}, patience);
    ASSERT_EQ(rig.start(), "");
    camera.set("settle 2");
    rig.takePhotos(1);
    const auto settled = photo(rig, 1);
    ASSERT_TRUE(settled);
    EXPECT_EQ(settled->width(), 1600);
    EXPECT_FALSE(isBlack(*settled));
    camera.unset("settle 2");
    const std::string live = "format video/x-raw, format=(string)YUY2, width=(int)1280";
    ASSERT_TRUE(eventually([&] { return camera.count(live) == 2; }));
    const int before = rig.shown->count();
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > before + 30; })) << "frames go on";

    camera.set("hang first");
    rig.takePhotos(1);
    ASSERT_TRUE(eventually([&] { return camera.count(live) > 2; })) << "given up";
    camera.unset("hang first");
    const auto frame = photo(rig, 2);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->width(), 1280);
    EXPECT_TRUE(rig.session->isRunning());
}

TEST(Device, WithH264AloneIsDecodedOrNamedAsUnusable) {
    const test::TestCamera cameras(
        "device Film\ncaps video/x-h264,stream-format=byte-stream,alignment=au,"
        "width=640,height=480,framerate=30/1\ndevice Desk\n");
    CaptureRig rig(cameraNamed("Film"));
    const bool isUsable = h264Decoder().has_value();
    const std::vector<CameraDescription> all = rig.platform->cameras();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[isUsable ? 0 : 1].name, "Film");
    EXPECT_EQ(all[isUsable ? 0 : 1].obstacle.empty(), isUsable);
    EXPECT_EQ(rig.start(), isUsable ? "" : kNoH264Decoder);
    if (!isUsable)
        return;
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 2; }));
    rig.takePhotos(1);
    EXPECT_EQ(sizeOf(rig.photos(1).at(0).file), (PhotoDimensions{640, 480}));
}

// Stopped as a debugger, a suspended machine or a container's freezer stops it.
TEST(Device, ThatWasQuietWhileTheProgramSleptIsNotLost) {
    const test::TestCamera camera;
    Patience patience = Patience().times(5);
    patience.frame = 3s;
    CaptureRig rig({}, patience);
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 1; }));
    const std::string waking = "(sleep 4; kill -CONT " + std::to_string(::getpid()) + ") &";
    ASSERT_EQ(std::system(waking.c_str()), 0);
    std::raise(SIGSTOP);
    EXPECT_TRUE(rig.session->isRunning());
    const int before = rig.shown->count();
    EXPECT_TRUE(eventually([&] { return rig.shown->count() > before + 30; }));
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_EQ(camera.count("opened "), 1);
}

TEST(Device, ThatFailsToOpenOrStartIsNotRunningAndCanBeTriedAgain) {
    for (const char* failure : {"fail open", "fail start", "stall-after 0"}) {
        SCOPED_TRACE(failure);
        test::TestCamera camera;
        camera.set(failure);
        CaptureRig rig({});
        EXPECT_EQ(rig.start().find('\n'), std::string::npos);
        EXPECT_FALSE(rig.session->isRunning());
        EXPECT_TRUE(camera.waitUntilClosed());
        camera.unset(failure);
        EXPECT_EQ(rig.start(), "");
        EXPECT_TRUE(rig.session->isRunning());
    }
}

// As this program's own former session is, for up to a second after it was released.
TEST(Device, ThatIsJustBeingGivenBackIsWaitedFor) {
    test::TestCamera camera;
    camera.set("busy");
    CaptureRig rig({});
    const std::jthread other([&] {
        std::this_thread::sleep_for(300ms);
        camera.unset("busy");
    });
    EXPECT_EQ(rig.start(), "");
    EXPECT_TRUE(rig.session->isRunning());
}

TEST(Device, PhotosUnderWayAreAnsweredInOrderWhenItStallsIsLostOrReleased) {
    for (const std::string end : {"stall", "loss", "release"}) {
        SCOPED_TRACE(end);
        const char* slower = "caps image/jpeg,width=640,height=480,framerate=30/1\n"
                             "caps image/jpeg,width=1920,height=1080,framerate=2/1\n";
        test::TestCamera camera("device Test Camera\n" + (end == "stall" ? kSlowStills : slower));
        CaptureRig rig({});
        ASSERT_EQ(rig.start(), "");
        if (end == "stall")
            camera.set("stall-after 0");
        rig.takePhotos(3);
        if (end == "release")
            rig.session.reset();
        else if (end == "loss")
            camera.set("unplugged");
        const PhotoAnswers::Log answers = rig.photos(3);
        ASSERT_EQ(answers.size(), 3u);
        for (std::size_t index = 0; index < 3; ++index)
            EXPECT_EQ(answers[index].number, static_cast<int>(index));
        if (end == "stall") {
            EXPECT_NE(answers[0].error, "");
            EXPECT_TRUE(eventually([&] { return !rig.session->isRunning(); }));
        }
        EXPECT_TRUE(camera.waitUntilClosed());
    }
}

TEST(DeviceBehindAPortal, IsNotFoundWhereThePortalsConnectionEndsOrHangs) {
    std::vector<base::OwnedDescriptor> far;
    bool ends = true;
    int opened = 0;
    const auto open = [&] {
        std::array<int, 2> pair{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()), 0);
        ++opened;
        base::OwnedDescriptor other(pair[0]);
        if (!ends)
            far.push_back(std::move(other));
        return base::OwnedDescriptor(pair[1]);
    };
    const auto list = [&] { return GStreamerCapturePlatform({}, open).cameras().size(); };
    EXPECT_EQ(list(), 0u);
    const int threads = threadCount();
    EXPECT_EQ(list(), 0u);
    EXPECT_EQ(opened, 2) << "what has ended is opened anew";
    EXPECT_TRUE(eventually([&] { return threadCount() <= threads; }));
    ends = false;
    for (int listing = 0; listing < 2; ++listing)
        EXPECT_EQ(list(), 0u);
    EXPECT_EQ(opened, 3) << "one that hangs is waited for again, as it may still answer";
    far.clear();
    EXPECT_EQ(list(), 0u);
    EXPECT_EQ(opened, 4);
}

}  // namespace
}  // namespace kestrelid::capture
