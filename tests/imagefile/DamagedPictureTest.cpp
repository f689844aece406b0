#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/FileBytes.h"

#include <gmock/gmock.h>

namespace kestrelid::imagefile {
namespace {

TEST(DamagedPicture, CutAnywhereIsAnErrorAndInTheMiddleCalledTruncated) {
    // The libraries' own complaints would reach the terminal of whatever program embeds this one.
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    for (const char* name :
         {"turned.jpg", "progressive.jpg", "turned.png", "gray16-interlaced.png", "turned.webp",
          "lossless.webp", "animated.webp", "lzw16-big-endian.tif", "turned-tiles.tif", "jpeg.tif",
          "blocks.heic"}) {
        SCOPED_TRACE(name);
        const Bytes file = pictureFile(name);
        for (std::size_t size = 0; size < file.size(); ++size) {
            // A copy of just this size, so that the address sanitizer sees a read beyond it.
            const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
            const std::string cause = causeOf(decodeImage(cut));
            EXPECT_NE(cause, "") << size << " of " << file.size() << " bytes";
            if (size == file.size() * 3 / 4) {
                EXPECT_THAT(cause,
                            testing::MatchesRegex("truncated (JPEG|PNG|WebP|TIFF|HEIC): .+"));
            }
        }
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// Cameras pad the last scan, and append previews after the end.
TEST(DamagedPicture, PaddedJpegIsWhole) {
    Bytes file = pictureFile("baseline.jpg");
    file.insert(file.end() - 2, 16, std::byte{0});
    file.insert(file.end(), 1000, std::byte{0xFF});
    const Image image = imageOf(decodeImage(file));
    ASSERT_TRUE(image.bitmap());
    EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 6), "");
}

}  // namespace
}  // namespace kestrelid::imagefile
