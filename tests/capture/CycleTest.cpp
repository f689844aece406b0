#include "tests/capture/CaptureRig.h"
#include "tests/capture/ProcessCounts.h"
#include "tests/capture/TestCamera.h"
#include "tests/capture/TestFiles.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>

namespace kestrelid::capture {
namespace {

using namespace test;
using namespace std::chrono_literals;

TEST(StartingAndReleasing, LeavesNoThreadAndNoDescriptor) {
    struct Case {
        const char* name;
        std::string camera;
        int cycles;
    };
    const TemporaryFolder folder;
    const auto film = folder / "film.avi";
    const auto picture = folder / "picture.png";
    writeFilm(film, 30);
    ASSERT_FALSE(writeImage(picture, Image(drawing(320, 240))));
    const test::TestCamera camera;
    for (const Case& row : {Case{"device", "", 50}, Case{"film", film.string(), 20},
                            Case{"picture", picture.string(), 20}}) {
        SCOPED_TRACE(row.name);
        CaptureRig rig(cameraNamed(row.camera));
        int threads = 0;
        int descriptors = 0;
        for (int cycle = 0; cycle < row.cycles; ++cycle) {
            ASSERT_EQ(rig.start(), "");
            ASSERT_TRUE(rig.session->isRunning());
            rig.takePhotos(1);
            rig.session.reset();
            ASSERT_TRUE(camera.waitUntilClosed(1s));
            rig.session = rig.platform->makeSession();
            ASSERT_EQ(rig.photos(static_cast<std::size_t>(cycle) + 1).size(), cycle + 1u);
            if (cycle == 4) {
                threads = test::threadCount();
                descriptors = test::descriptorCount();
            }
        }
        EXPECT_TRUE(eventually([&] { return test::threadCount() <= threads; }))
            << test::threadCount() << " after " << threads;
        EXPECT_TRUE(eventually([&] { return test::descriptorCount() <= descriptors; }))
            << test::descriptorCount() << " after " << descriptors;
    }
}

}  // namespace
}  // namespace kestrelid::capture
