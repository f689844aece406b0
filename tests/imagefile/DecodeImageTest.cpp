#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/FileBytes.h"

#include <gmock/gmock.h>

#include <string_view>

namespace kestrelid::imagefile {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(DecodeImage, GivesTheColoursOfEveryKindOfPicture) {
    constexpr auto rgb8 = PixelFormat::rgb8;
    constexpr auto gray8 = PixelFormat::gray8;
    const struct {
        const char* name;
        PixelFormat format = rgb8;
        int tolerance = 0;
        int opacity = 255;
    } cases[] = {
        {"baseline.jpg", rgb8, 6},
        {"progressive.jpg", rgb8, 6},
        {"gray.jpg", gray8, 6},
        {"ink.jpg", rgb8, 6},
        {"rows.png"},
        {"gray16-interlaced.png", gray8},
        {"transparent.png", rgb8, 1, 128},
        {"clear16-interlaced.png", rgb8, 0, 0},
        {"palette.png"},  // of four bits
        {"palette-transparent.png", rgb8, 1, 128},
        {"lossy.webp", rgb8, 8},
        {"transparent.webp", rgb8, 8, 128},
        {"lossless.webp"},
        {"lossless-transparent.webp", rgb8, 1, 128},
        {"rows.tif"},
        {"lzw16-big-endian.tif"},
        {"deflate-planes.tif"},
        {"tiles.tif"},
        {"gray-packbits.tif", gray8},
        {"white-is-zero16.tif", gray8},
        {"palette.tif"},
        {"ink.tif", rgb8, 1},
        {"jpeg.tif", rgb8, 12},
        {"transparent.tif", rgb8, 2, 128},
        {"blocks.heic", rgb8, 10},
        {"transparent.heic", rgb8, 10, 128},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Image image = imageOf(decodeImage(pictureFile(c.name)));
        ASSERT_TRUE(image.bitmap());
        EXPECT_EQ(image.bitmap()->width(), kWidth);
        EXPECT_EQ(image.bitmap()->height(), kHeight);
        EXPECT_EQ(image.bitmap()->format(), c.format);
        EXPECT_EQ(image.orientation(), Orientation::up);
        EXPECT_EQ(differenceFromBlocks(*image.bitmap(), c.tolerance, c.opacity), "");
    }
}

TEST(DecodeImage, LaysTheFirstFrameOfAnAnimationOnAWhiteCanvas) {
    const Image image = imageOf(decodeImage(pictureFile("animated.webp")));
    ASSERT_TRUE(image.bitmap());
    ASSERT_EQ(image.bitmap()->width(), 2 * kWidth);
    EXPECT_EQ(image.bitmap()->row(0)[0], std::byte{255});
    const auto frame = image.bitmap()->crop({kWidth, kHeight, kWidth, kHeight});
    EXPECT_EQ(differenceFromBlocks(*frame, 0), "");
}

TEST(DecodeImage, TakesTheOrientationOfEveryCarrierAndLeavesTheRows) {
    const auto expectOrientation = [](const Bytes& file, int orientation) {
        const Image image = imageOf(decodeImage(file));
        ASSERT_TRUE(image.bitmap());
        EXPECT_EQ(static_cast<int>(image.orientation()), orientation);
        EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 8), "");
    };
    for (const char* name : {"turned.jpg", "turned.webp", "turned.tif", "turned-tiles.tif"}) {
        Bytes file = pictureFile(name);
        const std::size_t place = placeOf(file, std::string_view("\x12\1\3\0\1\0\0\0", 8));
        for (const int tag : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 274}) {
            SCOPED_TRACE(testing::Message() << name << ", orientation " << tag);
            writeNumber(file, place, static_cast<std::uint32_t>(tag), 2, false);
            expectOrientation(file, tag >= 1 && tag <= 8 ? tag : 1);
        }
    }
    expectOrientation(pictureFile("turned.png"), 6);
}

TEST(DecodeImage, ShowsATurnedHeicUpright) {
    const Image image = imageOf(decodeImage(pictureFile("turned.heic")));
    ASSERT_TRUE(image.bitmap());
    EXPECT_EQ(image.orientation(), Orientation::up);
    ASSERT_EQ(image.bitmap()->width(), kHeight);
    EXPECT_EQ(
        differenceFromBlocks(*Image(*image.bitmap(), Orientation::left).upright().bitmap(), 12),
        "");
}

TEST(DecodeImage, ReducesAJpegAsLongAsTheLongerSideIsSufficient) {
    const Bytes file = pictureFile("201x134.jpg");
    const std::array<int, 3> cases[] = {{-7, 201, 134}, {0, 201, 134}, {102, 201, 134},
                                        {101, 101, 67}, {52, 101, 67}, {51, 51, 34},
                                        {26, 26, 17},   {1, 26, 17}};
    for (const auto& [side, width, height] : cases) {
        const Image image = imageOf(decodeImage(file, {.sufficientSide = side}));
        ASSERT_TRUE(image.bitmap());
        EXPECT_EQ(image.bitmap()->width(), width) << side;
        EXPECT_EQ(image.bitmap()->height(), height) << side;
        EXPECT_EQ(image.orientation(), Orientation::left);
        EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 8), "") << side;
    }
}

// Headers that claim more than is read; their pixels are missing
// or make no sense, so that only an early check is right.
TEST(DecodeImage, RefusesOversizedPicturesByTheirHeader) {
    using namespace std::string_view_literals;
    // With another number so many bytes behind mark.
    const auto altered = [](const char* name, std::string_view mark, int behind,
                            std::uint32_t number, int bytes, bool bigEndian) {
        Bytes file = pictureFile(name);
        writeNumber(file, placeOf(file, mark) + behind, number, bytes, bigEndian);
        return file;
    };
    constexpr std::string_view kTiffWidth("\0\1\3\0\1\0\0\0", 8);  // tag 256, one SHORT
    constexpr std::string_view kTiffHeight("\1\1\3\0\1\0\0\0", 8);
    // The picture is a grid of one tile; the last size is the grid's.
    constexpr std::string_view kHeicWidth("ispe\0\0\0\0\0\0\0\x30", 12);
    Bytes tiff = altered("rows.tif", kTiffWidth, 0, 0xFFFFFFFF, 4, false);
    writeNumber(tiff, placeOf(tiff, "\0\1\3\0"sv) - 2, 4, 2, false);  // a LONG takes the same place
    constexpr const char* kWide = "20001 pixels wide, at most 20000 are read";
    constexpr const char* kHigh = "20001 pixels high, at most 20000 are read";
    constexpr const char* kMany = "pixels, at most 100 million are read";
    const std::pair<Bytes, const char*> cases[] = {
        {pictureFile("header-20001x1.png"), kWide},
        {pictureFile("header-1x20001.png"), kHigh},
        {pictureFile("header-20000x5001.png"), kMany},
        {altered("baseline.jpg", "\xFF\xC0", 5, 20001, 2, true), kWide},
        {altered("baseline.jpg", "\xFF\xC0", 3, 20001, 2, true), kHigh},
        {altered("rows.tif", kTiffWidth, 0, 20001, 2, false), kWide},
        {altered("rows.tif", kTiffHeight, 0, 20001, 2, false), kHigh},
        {tiff, "4294967295 pixels wide"},
        {altered("animated.webp", "VP8X", 8, 20000, 3, false), kWide},
        {altered("animated.webp", "VP8X", 11, 20000, 3, false), kHigh},
        {altered("lossless.webp", "VP8L", 5, 16382 + 16382 * 0x4000, 4, false), kMany},
        {altered("blocks.heic", kHeicWidth, -4, 20001, 4, true), kWide},
        {altered("blocks.heic", kHeicWidth, 0, 20001, 4, true), kHigh},
    };
    for (const auto& [file, cause] : cases)
        EXPECT_THAT(causeOf(decodeImage(file)), HasSubstr(cause));
    EXPECT_THAT(causeOf(decodeImage(Bytes(kMaximumFileSize + 1))), HasSubstr("at most 67108864"));
}

TEST(DecodeImage, NamesWhatItDoesNotRead) {
    const std::pair<Bytes, const char*> cases[] = {
        {bytesOf("GIF89a......"), "a GIF file; JPEG, PNG, WebP, TIFF and HEIC pictures are read"},
        {bytesOf("%PDF-1.7\n"), "a PDF file; "},
        {bytesOf(std::string_view("\0\0\0\x20"
                                  "ftypavif\0\0\0\0",
                                  16)),
         "an AVIF file; "},
        {bytesOf("just text"), "unknown format; "},
        {bytesOf("\xFF"), "unknown format; "},
        {{}, "the file is empty"},
    };
    for (const auto& [file, cause] : cases)
        EXPECT_THAT(causeOf(decodeImage(file)), StartsWith(cause));
    EXPECT_EQ(causeOf(decodeImage(pictureFile("lzma.tif"))), "unsupported TIFF: compression 34925");
}

}  // namespace
}  // namespace kestrelid::imagefile
