#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/EncodedPictures.h"

#include <gmock/gmock.h>
#include <tiffio.h>

#include <random>

namespace kestrelid::imagefile {
namespace {

struct Intact {
    const char* name;
    Bytes file;
};

std::vector<Intact> intactFiles() {
    const Bitmap blocks = blockPicture();
    return {
        {"JPEG", encodeTestJpeg(blocks, {.orientation = 3})},
        {"JPEG, progressive", encodeTestJpeg(blocks, {.progressive = true})},
        {"PNG", encodeTestPng(blocks, {.color = Color::palette, .opacity = 128, .orientation = 3})},
        {"PNG, interlaced", encodeTestPng(blocks, {.bitDepth = 16, .interlaced = true})},
        {"WebP", encodeTestWebP(blocks, {.opacity = 128, .orientation = 3})},
        {"WebP, lossless", encodeTestWebP(blocks, {.lossless = true})},
        {"WebP, animated", encodeTestWebP(blocks, {.animated = true})},
        {"TIFF", encodeTestTiff(blocks, {.compression = COMPRESSION_LZW, .orientation = 3})},
        {"TIFF, tiles", encodeTestTiff(blocks, {.color = Color::rgba, .tiled = true})},
        {"TIFF, JPEG",
         encodeTestTiff(blocks, {.color = Color::ycbcr, .compression = COMPRESSION_JPEG})},
        {"HEIC", committedHeic()},
    };
}

// An answer of either kind is right; a crash, an exception or a cause of no words is not.
void decodeWhatever(const Bytes& file) {
    const ImageResult result = decodeImage(file);
    if (std::holds_alternative<ImageError>(result))
        EXPECT_NE(causeOf(result), "");
    else
        EXPECT_TRUE(std::get<Image>(result).bitmap());
}

// The libraries' own complaints would reach the terminal of whatever program embeds this one.
class Silence {
public:
    Silence() {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    }
};

TEST(DamagedPicture, CutAnywhereIsAnErrorAndInTheMiddleCalledTruncated) {
    for (const Intact& intact : intactFiles()) {
        SCOPED_TRACE(intact.name);
        const Silence silence;
        for (std::size_t size = 0; size < intact.file.size(); ++size) {
            // A copy of just this size, so that the address sanitizer sees a read beyond it.
            const Bytes cut(intact.file.begin(),
                            intact.file.begin() + static_cast<std::ptrdiff_t>(size));
            const std::string cause = causeOf(decodeImage(cut));
            EXPECT_NE(cause, "") << size << " of " << intact.file.size() << " bytes";
            if (size == intact.file.size() * 3 / 4) {
                EXPECT_THAT(cause,
                            testing::MatchesRegex("truncated (JPEG|PNG|WebP|TIFF|HEIC): .+"));
            }
        }
    }
}

TEST(DamagedPicture, FlippedBitsNeverCrash) {
    constexpr int kRounds = 2000;
    std::mt19937 random(20240229);
    for (const Intact& intact : intactFiles()) {
        SCOPED_TRACE(intact.name);
        const Silence silence;
        std::uniform_int_distribution<std::size_t> anywhere(0, intact.file.size() - 1);
        std::uniform_int_distribution<int> count(1, 4);
        for (int round = 0; round < kRounds; ++round) {
            Bytes file = intact.file;
            for (int flips = count(random); flips > 0; --flips)
                file[anywhere(random)] ^= static_cast<std::byte>(1 << random() % 8);
            decodeWhatever(file);
        }
    }
}

// Cameras pad the last scan, and append previews after the end.
TEST(DamagedPicture, PaddedJpegIsWhole) {
    Bytes file = encodeTestJpeg(blockPicture());
    file.insert(file.end() - 2, 16, std::byte{0});
    file.insert(file.end(), 1000, std::byte{0xFF});
    const Image image = imageOf(decodeImage(file));
    ASSERT_TRUE(image.bitmap());
    EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 6), "");
}

}  // namespace
}  // namespace kestrelid::imagefile
