#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestCamera.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace kestrelid::capture {
namespace {

using namespace test;
using namespace std::chrono_literals;

PhotoDimensions sizeOf(const std::vector<std::byte>& file) {
    const ImageResult decoded = decodeImage(file);
    const auto* image = std::get_if<Image>(&decoded);
    return image ? PhotoDimensions{.width = image->bitmap()->width(),
                                   .height = image->bitmap()->height()}
                 : PhotoDimensions{};
}

TEST(Device, ThereIsNoneWithoutACamera) {
    CaptureRig rig({});
    EXPECT_EQ(rig.start(), "no camera");
    EXPECT_FALSE(rig.session->isRunning());
    EXPECT_TRUE(rig.platform->cameras().empty());
}

TEST(Device, IsChosenByName) {
    const test::TestCamera cameras("device Desk\ndevice Lid\n");
    const CaptureRig any({});
    const auto all = any.platform->cameras();
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(any.platform->defaultVideoDevice()->name(), all[0].name);
    for (const char* name : {"Desk", "Lid"}) {
        const CaptureRig rig(cameraNamed(name));
        ASSERT_TRUE(rig.platform->defaultVideoDevice()) << name;
        EXPECT_EQ(rig.platform->defaultVideoDevice()->name(), name);
    }
    EXPECT_FALSE(CaptureRig(cameraNamed("Roof")).platform->defaultVideoDevice());
}

TEST(Device, DeliversSteadyFramesOfAboutTheLiveSize) {
    const test::TestCamera camera;
    CaptureRig rig({});
    rig.taken->keeps = 1;
    ASSERT_EQ(rig.start(), "");
    EXPECT_TRUE(rig.session->isRunning());
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 0 && !rig.taken->kept().empty(); }));
    const int before = rig.shown->count();
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(eventually([&] { return rig.shown->count() >= before + 45; }));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
    EXPECT_NEAR(45 / took.count(), 30.0, 5.0);
    EXPECT_EQ(rig.shown->last()->width(), 1280);
    EXPECT_EQ(rig.shown->last()->height(), 720);
    EXPECT_EQ(rig.taken->kept()[0].format(), PixelFormat::bgra8);
}

struct FormatCase {
    const char* name;
    const char* caps;
    int liveWidth;
    PhotoDimensions photo;
};

void PrintTo(const FormatCase& row, std::ostream* out) {
    *out << row.name;
}

class DeviceFormats : public testing::TestWithParam<FormatCase> {};

TEST_P(DeviceFormats, ShowsOneAndTakesPhotosInTheLargest) {
    const FormatCase& row = GetParam();
    const test::TestCamera camera("device Test Camera\n" + std::string(row.caps));
    CaptureRig rig({});
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 2; }));
    EXPECT_EQ(rig.shown->last()->width(), row.liveWidth);
    EXPECT_EQ(rig.photoOutput->maxPhotoDimensions(), row.photo);
    for (int round = 0; round < 2; ++round) {
        const auto asked = std::chrono::steady_clock::now();
        const std::size_t answered = rig.answers->answers().size();
        rig.takePhotos(2);
        const PhotoAnswers::Log answers = rig.photos(answered + 2);
        ASSERT_EQ(answers.size(), answered + 2);
        for (std::size_t index = answered; index < answers.size(); ++index) {
            EXPECT_EQ(answers[index].error, "");
            EXPECT_EQ(sizeOf(answers[index].file), row.photo);
            EXPECT_LT(answers[index].time - asked, 3s);
        }
        const int before = rig.shown->count();
        EXPECT_TRUE(eventually([&] { return rig.shown->count() > before + 2; }, 2s));
        EXPECT_EQ(rig.shown->last()->width(), row.liveWidth);
        EXPECT_TRUE(rig.session->isRunning());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Caps, DeviceFormats,
    testing::Values(
        FormatCase{"raw",
                   "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1\n"
                   "caps video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1\n",
                   1280,
                   {.width = 1920, .height = 1080}},
        FormatCase{"jpeg",
                   "caps image/jpeg,width=1280,height=720,framerate=30/1\n"
                   "caps image/jpeg,width=1920,height=1080,framerate=30/1\n",
                   1280,
                   {.width = 1920, .height = 1080}},
        FormatCase{"raw frames, jpeg stills",
                   "caps video/x-raw,format=NV12,width=640,height=480,framerate=30/1\n"
                   "caps image/jpeg,width=1920,height=1080,framerate=15/1\n",
                   640,
                   {.width = 1920, .height = 1080}},
        FormatCase{"one size",
                   "caps video/x-raw,format=BGRx,width=640,height=480,framerate=30/1\n",
                   640,
                   {.width = 640, .height = 480}}));

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
    const PhotoAnswers::Log answers = rig.photos(1);
    ASSERT_EQ(answers.size(), 1u);
    const ImageResult decoded = decodeImage(answers[0].file);
    ASSERT_TRUE(std::holds_alternative<Image>(decoded));
    EXPECT_EQ(std::get<Image>(decoded).orientation(), Orientation::right);
    ASSERT_TRUE(eventually([&] { return rig.shown->count() > 0; }));
    EXPECT_EQ(rig.shown->orientation, Orientation::right);
    EXPECT_TRUE(rig.shown->isMirrored);
}

struct LossCase {
    const char* name;
    void (*happen)(test::TestCamera&);
    void (*mend)(test::TestCamera&);
};

void PrintTo(const LossCase& row, std::ostream* out) {
    *out << row.name;
}

class DeviceLoss : public testing::TestWithParam<LossCase> {};

TEST_P(DeviceLoss, EndsTheSessionSoonAndItCanBeSetUpAgain) {
    test::TestCamera camera;
    CaptureRig rig({});
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(rig.session->isRunning());
    GetParam().happen(camera);
    const auto happened = std::chrono::steady_clock::now();
    ASSERT_TRUE(eventually([&] { return !rig.session->isRunning(); }));
    EXPECT_LT(std::chrono::steady_clock::now() - happened, 2s);
    EXPECT_TRUE(rig.photoOutput->connections().empty());
    rig.takePhotos(1);
    const PhotoAnswers::Log answers = rig.photos(1);
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_NE(answers[0].error, "");
    EXPECT_TRUE(camera.waitUntilClosed(1s));

    GetParam().mend(camera);
    ASSERT_TRUE(eventually([&] { return rig.platform->defaultVideoDevice() != nullptr; }));
    const int before = rig.shown->count();
    EXPECT_EQ(rig.start(), "");
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_TRUE(eventually([&] { return rig.shown->count() > before; }));
    EXPECT_FALSE(rig.photoOutput->connections().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Causes, DeviceLoss,
    testing::Values(LossCase{"unplugged", [](test::TestCamera& camera) { camera.unplug(); },
                             [](test::TestCamera& camera) { camera.plug(); }},
                    LossCase{"unplugged with an error",
                             [](test::TestCamera& camera) { camera.unplug(true); },
                             [](test::TestCamera& camera) { camera.plug(); }},
                    LossCase{"error", [](test::TestCamera& camera) { camera.set("error-after 1"); },
                             [](test::TestCamera& camera) { camera.unset("error-after"); }},
                    LossCase{"stall", [](test::TestCamera& camera) { camera.set("stall-after 1"); },
                             [](test::TestCamera& camera) { camera.unset("stall-after"); }}));

TEST(Device, ThatFailsToOpenOrStartIsNotRunningAndCanBeTriedAgain) {
    for (const char* failure : {"fail open", "fail busy", "fail start", "stall-after 0"}) {
        SCOPED_TRACE(failure);
        test::TestCamera camera;
        camera.set(failure);
        CaptureRig rig({});
        const auto began = std::chrono::steady_clock::now();
        const std::string error = rig.start();
        EXPECT_LT(std::chrono::steady_clock::now() - began, 2100ms);
        EXPECT_FALSE(rig.session->isRunning());
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_TRUE(camera.waitUntilClosed(1s));
        camera.unset(failure);
        EXPECT_EQ(rig.start(), "");
        EXPECT_TRUE(rig.session->isRunning());
    }
}

TEST(Device, ThatStallsDuringAPhotoIsLostAsSoonAsAnyOther) {
    test::TestCamera camera("device Test Camera\n"
                            "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1\n"
                            "caps video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1\n");
    CaptureRig rig({});
    ASSERT_EQ(rig.start(), "");
    camera.set("stall-after 0");
    const auto happened = std::chrono::steady_clock::now();
    rig.takePhotos(1);
    ASSERT_TRUE(eventually([&] { return !rig.session->isRunning(); }));
    EXPECT_LT(std::chrono::steady_clock::now() - happened, 2s);
    const PhotoAnswers::Log answers = rig.photos(1);
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_NE(answers[0].error, "");
    EXPECT_TRUE(camera.waitUntilClosed(3s));
}

TEST(Device, PhotosUnderWayAreAnsweredWhenItIsLostOrReleased) {
    for (const bool released : {false, true}) {
        SCOPED_TRACE(released ? "released" : "lost");
        test::TestCamera camera("device Test Camera\n"
                                "caps image/jpeg,width=640,height=480,framerate=30/1\n"
                                "caps image/jpeg,width=1920,height=1080,framerate=1/2\n");
        CaptureRig rig({});
        ASSERT_EQ(rig.start(), "");
        rig.takePhotos(3);
        const auto happened = std::chrono::steady_clock::now();
        if (released)
            rig.session.reset();
        else
            camera.unplug();
        const PhotoAnswers::Log answers = rig.photos(3);
        ASSERT_EQ(answers.size(), 3u);
        EXPECT_LT(answers[2].time - happened, 3s);
        for (std::size_t index = 0; index < 3; ++index)
            EXPECT_EQ(answers[index].number, static_cast<int>(index));
    }
}

}  // namespace
}  // namespace kestrelid::capture
