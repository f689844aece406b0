#include "tests/capture/CaptureRig.h"
#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/capture/TestFiles.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>

namespace kestrelid::capture {
namespace {

using namespace test;

TEST(StartingAndReleasing, LeavesNoThreadAndNoDescriptor) {
    const TemporaryFolder folder;
    const auto film = folder / "film.avi";
    const auto picture = folder / "picture.png";
    writeFilm(film, 30);
    ASSERT_FALSE(writeImage(picture, Image(drawing(320, 240))));
    const test::TestCamera camera;
    for (const std::string& source : {std::string(), film.string(), picture.string()}) {
        SCOPED_TRACE(source.empty() ? "device" : source);
        CaptureRig rig(cameraNamed(source));
        int threads = 0;
        int descriptors = 0;
        for (std::size_t cycle = 0; cycle < 20; ++cycle) {
            ASSERT_EQ(rig.start(), "");
            ASSERT_TRUE(rig.session->isRunning());
            rig.takePhotos(1);
            rig.session.reset();
            ASSERT_TRUE(camera.waitUntilClosed());
            rig.session = rig.platform->makeSession();
            ASSERT_EQ(rig.photos(cycle + 1).size(), cycle + 1);
            if (cycle == 4) {
                threads = threadCount();
                descriptors = descriptorCount();
            }
        }
        EXPECT_TRUE(eventually([&] { return threadCount() <= threads; }))
            << threadCount() << " after " << threads;
        EXPECT_TRUE(eventually([&] { return descriptorCount() <= descriptors; }))
            << descriptorCount() << " after " << descriptors;
    }
}

}  // namespace
}  // namespace kestrelid::capture
