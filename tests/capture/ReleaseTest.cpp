#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestCamera.h"

#include "base/AsioQueue.h"
#include "capture/gstreamer/GStreamerOutputs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <future>
#include <optional>
#include <thread>

namespace kestrelid::capture {
namespace {

using namespace test;

TEST(Release, LetsTheDeviceGoFromAnyThreadAndNoCallComesAfterwards) {
    for (const std::string releaser :
         {"main", "frame queue", "preview surface", "photo delegate"}) {
        SCOPED_TRACE(releaser);
        for (int round = 0; round < 5; ++round) {
            const test::TestCamera camera;
            CaptureRig rig({});
            std::atomic<bool> wanted = false;
            std::atomic<bool> released = false;
            std::atomic<int> shownThen = 0;
            std::atomic<int> takenThen = 0;
            const auto release = [&] {
                if (!wanted.exchange(false))
                    return;
                rig.session.reset();
                shownThen = rig.shown->count();
                takenThen = rig.taken->count();
                released = true;
            };
            if (releaser == "frame queue")
                rig.taken->onFrame = release;
            if (releaser == "photo delegate")
                rig.answers->onAnswer = release;
            if (releaser == "preview surface")
                rig.shown->onFrame = release;
            ASSERT_EQ(rig.start(), "");
            ASSERT_TRUE(
                eventually([&] { return rig.taken->count() > 0 && rig.shown->count() > 0; }));
            wanted = true;
            if (releaser == "main")
                release();
            else if (releaser == "photo delegate")
                rig.takePhotos(1);
            ASSERT_TRUE(eventually([&] { return released.load(); }));
            ASSERT_TRUE(camera.waitUntilClosed());
            // One that was under way may still have counted itself.
            EXPECT_LE(rig.shown->count(), shownThen + 1);
            EXPECT_LE(rig.taken->count(), takenThen + 1);
        }
    }
}

std::optional<test::TestCamera> slowPlugin;

// Ends while GStreamer loads a plugin; after all that waits for the end has waited, says whether
// the plugin is loaded.
[[noreturn]] void endWhileAPluginIsLoaded() {
    setenv("KESTRELID_TEST_SLOW_PLUGIN", "", 1);
    slowPlugin.emplace();
    std::atexit([] { std::_Exit(slowPlugin->count("loaded") > 0 ? 7 : 1); });
    std::thread([] { (void)GStreamerCapturePlatform({}).cameras(); }).detach();
    (void)eventually([] { return slowPlugin->count("loading") > 0; });
    std::exit(2);
}

TEST(ReleaseDeathTest, TheProcessEndsOnceItsPluginsAreLoaded) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(endWhileAPluginIsLoaded(), testing::ExitedWithCode(7), "");
}

TEST(SlowDelegate, HasFramesDroppedAndNoMoreMemoryThanThreePictures) {
    const test::TestCamera camera;
    CaptureRig rig({});
    rig.taken->keeps = 100;
    std::promise<void> go;
    const std::shared_future<void> gone = go.get_future().share();
    rig.taken->onFrame = [gone] { gone.wait(); };
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually([&] { return rig.shown->count() >= 20 && rig.taken->count() > 0; }));
    EXPECT_EQ(rig.taken->count(), 1) << "the queue is still busy with the first";
    go.set_value();
    EXPECT_TRUE(eventually([&] { return rig.taken->count() > 10; }));
    rig.session.reset();
    EXPECT_EQ(rig.taken->kept().size(), std::size_t{GStreamerVideoOutput::kMostRendered});
}

TEST(Consumers, MayComeWhileTheSessionRuns) {
    const test::TestCamera camera;
    CaptureRig rig({});
    rig.shown.reset();
    rig.videoOutput->setSampleBufferDelegate({}, nullptr);
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually([&] { return camera.count("frames 31") > 0; }));
    EXPECT_TRUE(rig.session->isRunning()) << "nobody looks";
    const auto late = std::make_shared<ShownFrames>();
    rig.session->addPreviewSurface(late);
    rig.videoOutput->setSampleBufferDelegate(rig.taken,
                                             std::make_shared<base::AsioQueue>("test", 1));
    EXPECT_TRUE(eventually([&] { return late->count() > 0 && rig.taken->count() > 1; }));
}

TEST(Configuration, TakesEffectWhenItIsCommittedAndOneOfEachKindFits) {
    const test::TestCamera cameras("device Desk\ndevice Lid\n");
    CaptureRig rig(cameraNamed("Desk"));
    const CaptureRig other(cameraNamed("Lid"));
    const auto makeInput = [](const CaptureRig& of) {
        return std::get<std::shared_ptr<CaptureInput>>(
            of.platform->makeInput(of.platform->defaultVideoDevice()));
    };
    const auto input = makeInput(rig);
    rig.session->startRunning();
    EXPECT_FALSE(rig.session->isRunning()) << "no input";
    rig.session->beginConfiguration();
    rig.session->addInput(input);
    rig.session->addOutput(rig.photoOutput);
    EXPECT_FALSE(rig.session->canAddInput(makeInput(rig)));
    EXPECT_FALSE(rig.session->canAddOutput(rig.platform->makePhotoOutput()));
    EXPECT_TRUE(rig.photoOutput->connections().empty());
    EXPECT_TRUE(rig.photoOutput->availablePhotoCodecTypes().empty());
    rig.session->commitConfiguration();
    EXPECT_EQ(rig.photoOutput->connections().size(), 1u);
    EXPECT_FALSE(rig.session->canAddInput(makeInput(other)));
    EXPECT_TRUE(rig.session->canAddOutput(rig.videoOutput));
    rig.takePhotos(1);
    EXPECT_NE(rig.photos(1).at(0).error, "") << "not running yet";
    rig.session->startRunning();
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_EQ(rig.start(), "") << "the same device once more";
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_EQ(cameras.count("format"), 1) << "a second start does nothing";
}

}  // namespace
}  // namespace kestrelid::capture
