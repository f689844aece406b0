#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/EncodedPictures.h"
#include "tests/imagefile/FileBytes.h"

#include <gmock/gmock.h>
#include <tiffio.h>

#include <string_view>

namespace kestrelid::imagefile {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct RoundTrip {
    const char* name;
    Bytes file;
    PixelFormat format;
    int tolerance;
    int opacity = 255;
};

TEST(DecodeImage, GivesTheColoursOfEveryKindOfPicture) {
    constexpr auto rgb8 = PixelFormat::rgb8;
    constexpr auto gray8 = PixelFormat::gray8;
    const Bitmap blocks = blockPicture();
    const RoundTrip cases[] = {
        {"JPEG", encodeTestJpeg(blocks), rgb8, 6},
        {"JPEG, progressive", encodeTestJpeg(blocks, {.progressive = true}), rgb8, 6},
        {"JPEG, gray", encodeTestJpeg(blocks, {.color = Color::gray}), gray8, 6},
        {"JPEG, ink", encodeTestJpeg(blocks, {.color = Color::ink}), rgb8, 6},
        {"PNG", encodeTestPng(blocks), rgb8, 0},
        {"PNG, interlaced", encodeTestPng(blocks, {.interlaced = true}), rgb8, 0},
        {"PNG, 16 bits", encodeTestPng(blocks, {.bitDepth = 16}), rgb8, 0},
        {"PNG, gray", encodeTestPng(blocks, {.color = Color::gray}), gray8, 0},
        {"PNG, gray, 16 bits, interlaced",
         encodeTestPng(blocks, {.color = Color::gray, .bitDepth = 16, .interlaced = true}), gray8,
         0},
        {"PNG, half transparent", encodeTestPng(blocks, {.color = Color::rgba, .opacity = 128}),
         rgb8, 1, 128},
        {"PNG, transparent, 16 bits, interlaced",
         encodeTestPng(blocks,
                       {.color = Color::rgba, .bitDepth = 16, .interlaced = true, .opacity = 0}),
         rgb8, 0, 0},
        {"PNG, palette", encodeTestPng(blocks, {.color = Color::palette, .bitDepth = 4}), rgb8, 0},
        {"PNG, palette, half transparent",
         encodeTestPng(blocks, {.color = Color::palette, .interlaced = true, .opacity = 100}), rgb8,
         1, 100},
        {"WebP", encodeTestWebP(blocks), rgb8, 8},
        {"WebP, half transparent", encodeTestWebP(blocks, {.opacity = 128}), rgb8, 8, 128},
        {"WebP, lossless", encodeTestWebP(blocks, {.lossless = true}), rgb8, 0},
        {"WebP, lossless, transparent", encodeTestWebP(blocks, {.lossless = true, .opacity = 77}),
         rgb8, 1, 77},
        {"TIFF", encodeTestTiff(blocks), rgb8, 0},
        {"TIFF, 16 bits, LZW, big endian",
         encodeTestTiff(blocks, {.bits = 16, .compression = COMPRESSION_LZW, .bigEndian = true}),
         rgb8, 0},
        {"TIFF, deflate, planes",
         encodeTestTiff(blocks, {.compression = COMPRESSION_ADOBE_DEFLATE, .planes = true}), rgb8,
         0},
        {"TIFF, tiles", encodeTestTiff(blocks, {.tiled = true}), rgb8, 0},
        {"TIFF, gray",
         encodeTestTiff(blocks, {.color = Color::gray, .compression = COMPRESSION_PACKBITS}), gray8,
         0},
        {"TIFF, white is zero, 16 bits",
         encodeTestTiff(blocks, {.color = Color::whiteIsZero, .bits = 16}), gray8, 0},
        {"TIFF, palette", encodeTestTiff(blocks, {.color = Color::palette}), rgb8, 0},
        {"TIFF, ink", encodeTestTiff(blocks, {.color = Color::ink}), rgb8, 1},
        {"TIFF, JPEG",
         encodeTestTiff(blocks, {.color = Color::ycbcr, .compression = COMPRESSION_JPEG}), rgb8,
         12},
        {"TIFF, half transparent", encodeTestTiff(blocks, {.color = Color::rgba, .opacity = 128}),
         rgb8, 2, 128},
        {"HEIC", committedHeic(), rgb8, 10},
        {"HEIC, half transparent", committedHeic("transparent.heic"), rgb8, 10, 128},
    };
    for (const RoundTrip& c : cases) {
        const Image image = imageOf(decodeImage(c.file));
        ASSERT_TRUE(image.bitmap()) << c.name;
        EXPECT_EQ(image.bitmap()->width(), blocks.width()) << c.name;
        EXPECT_EQ(image.bitmap()->height(), blocks.height()) << c.name;
        EXPECT_EQ(image.bitmap()->format(), c.format) << c.name;
        EXPECT_EQ(image.orientation(), Orientation::up) << c.name;
        EXPECT_EQ(differenceFromBlocks(*image.bitmap(), c.tolerance, c.opacity), "") << c.name;
    }
}

TEST(DecodeImage, LaysTheFirstFrameOfAnAnimationOnAWhiteCanvas) {
    const Bitmap blocks = blockPicture();
    const Image image =
        imageOf(decodeImage(encodeTestWebP(blocks, {.lossless = true, .animated = true})));
    ASSERT_TRUE(image.bitmap());
    ASSERT_EQ(image.bitmap()->width(), 2 * blocks.width());
    EXPECT_EQ(image.bitmap()->row(0)[0], std::byte{255});
    const auto frame =
        image.bitmap()->crop({blocks.width(), blocks.height(), blocks.width(), blocks.height()});
    EXPECT_EQ(differenceFromBlocks(*frame, 0), "");
}

TEST(DecodeImage, TakesTheOrientationOfEveryCarrierAndLeavesTheRows) {
    const Bitmap blocks = blockPicture();
    for (const int tag : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 274}) {
        const bool isValid = tag >= 1 && tag <= 8;
        const OrientationTag valid = isValid ? OrientationTag(tag) : std::nullopt;
        const std::pair<const char*, Bytes> files[] = {
            {"JPEG", encodeTestJpeg(blocks, {.orientation = tag})},
            {"PNG", encodeTestPng(blocks, {.orientation = tag})},
            {"WebP", encodeTestWebP(blocks, {.orientation = tag})},
            {"TIFF", encodeTestTiff(blocks, {.orientation = valid})},
            {"TIFF, tiles", encodeTestTiff(blocks, {.tiled = true, .orientation = valid})},
        };
        for (const auto& [name, file] : files) {
            const Image image = imageOf(decodeImage(file));
            ASSERT_TRUE(image.bitmap()) << name;
            EXPECT_EQ(static_cast<int>(image.orientation()), isValid ? tag : 1) << name;
            EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 8), "")
                << name << ", orientation " << tag;
        }
    }
}

TEST(DecodeImage, TakesADamagedOrientationAsUp) {
    const Bytes intact = encodeTestJpeg(blockPicture(), {.orientation = 6});
    const std::size_t exif = placeOf(intact, std::string_view("Exif\0\0", 6));
    for (std::size_t at = exif; at < exif + 26; ++at) {
        Bytes file = intact;
        file[at] ^= std::byte{0x80};
        const Image image = imageOf(decodeImage(file));
        EXPECT_THAT(static_cast<int>(image.orientation()), testing::AnyOf(1, 6)) << at - exif;
    }
}

TEST(DecodeImage, ShowsATurnedHeicUpright) {
    const Image image = imageOf(decodeImage(committedHeic("turned.heic")));
    ASSERT_TRUE(image.bitmap());
    EXPECT_EQ(image.orientation(), Orientation::up);
    ASSERT_EQ(image.bitmap()->width(), blockPicture().height());
    EXPECT_EQ(
        differenceFromBlocks(*Image(*image.bitmap(), Orientation::left).upright().bitmap(), 12),
        "");
}

TEST(DecodeImage, ReducesAJpegAsLongAsTheLongerSideIsSufficient) {
    const Bytes file = encodeTestJpeg(blockPicture(67), {.orientation = 8});  // 201 x 134
    const std::pair<int, PixelRect> cases[] = {
        {0, {0, 0, 201, 134}},   {-7, {0, 0, 201, 134}}, {500, {0, 0, 201, 134}},
        {102, {0, 0, 201, 134}}, {101, {0, 0, 101, 67}}, {52, {0, 0, 101, 67}},
        {51, {0, 0, 51, 34}},    {26, {0, 0, 26, 17}},   {1, {0, 0, 26, 17}},
    };
    for (const auto& [side, size] : cases) {
        const Image image = imageOf(decodeImage(file, {.sufficientSide = side}));
        ASSERT_TRUE(image.bitmap());
        EXPECT_EQ(image.bitmap()->width(), size.width) << side;
        EXPECT_EQ(image.bitmap()->height(), size.height) << side;
        EXPECT_EQ(image.orientation(), Orientation::left);
        EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 8), "") << side;
    }
}

// Headers that claim more than is read; their pixels are missing
// or make no sense, so that only an early check is right.
TEST(DecodeImage, RefusesOversizedPicturesByTheirHeader) {
    const auto jpeg = [](std::uint32_t width, std::uint32_t height) {
        Bytes file = encodeTestJpeg(blockPicture());
        const std::size_t frame = placeOf(file, "\xFF\xC0");
        writeNumber(file, frame + 3, height, 2, true);
        writeNumber(file, frame + 5, width, 2, true);
        return file;
    };
    const auto tiff = [](std::uint32_t width, std::uint32_t height) {
        Bytes file = encodeTestTiff(blockPicture());
        // Tags 256 and 257, one value of type SHORT each; a LONG takes the same place.
        const std::size_t widthTag =
            placeOf(file, std::string_view("\x00\x01\x03\x00\x01\x00\x00\x00", 8));
        const std::size_t heightTag =
            placeOf(file, std::string_view("\x01\x01\x03\x00\x01\x00\x00\x00", 8));
        writeNumber(file, widthTag, width, 4, false);
        writeNumber(file, widthTag - 6, TIFF_LONG, 2, false);
        writeNumber(file, heightTag, height, 4, false);
        writeNumber(file, heightTag - 6, TIFF_LONG, 2, false);
        return file;
    };
    const auto webp = [](int width, int height) {
        Bytes file = encodeTestWebP(blockPicture(), {.lossless = true});
        writeNumber(file, placeOf(file, "VP8L") + 5,
                    static_cast<std::uint32_t>(width - 1 + (height - 1) * 0x4000), 4, false);
        return file;
    };
    const auto heic = [](std::uint32_t width, std::uint32_t height) {
        Bytes file = committedHeic();
        // The picture is a grid of one tile; the last size is the grid's.
        const std::size_t size = placeOf(file, std::string_view("ispe\0\0\0\0\0\0\0\x30", 12)) - 4;
        writeNumber(file, size, width, 4, true);
        writeNumber(file, size + 4, height, 4, true);
        return file;
    };
    constexpr const char* kWide = "20001 pixels wide, at most 20000 are read";
    constexpr const char* kHigh = "20001 pixels high, at most 20000 are read";
    constexpr const char* kMany = "pixels, at most 100 million are read";
    const std::pair<Bytes, const char*> cases[] = {
        {jpeg(20001, 1), kWide},      {jpeg(1, 20001), kHigh},
        {jpeg(20000, 5001), kMany},   {pngHeader(20001, 1), kWide},
        {pngHeader(1, 20001), kHigh}, {pngHeader(20000, 5001), kMany},
        {tiff(20001, 1), kWide},      {tiff(1, 20001), kHigh},
        {tiff(20000, 5001), kMany},   {tiff(0xFFFFFFFF, 1), "4294967295 pixels wide"},
        {webp(16383, 16383), kMany},  {heic(20001, 16), kWide},
        {heic(20000, 5001), kMany},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_THAT(causeOf(decodeImage(cases[i].first)), HasSubstr(cases[i].second))
            << "case " << i;
    EXPECT_THAT(causeOf(decodeImage(Bytes(kMaximumFileSize + 1))), HasSubstr("at most 67108864"));
}

TEST(DecodeImage, NamesWhatItDoesNotRead) {
    const std::pair<Bytes, const char*> cases[] = {
        {bytesOf("GIF89a......"), "a GIF file; JPEG, PNG, WebP, TIFF and HEIC pictures are read"},
        {bytesOf("%PDF-1.7\n"), "a PDF file; "},
        {bytesOf(std::string_view("\0\0\0\x20"
                                  "ftypavif\0\0\0\0",
                                  16)),
         "a AVIF file; "},
        {bytesOf("just text"), "unknown format; "},
        {bytesOf("\xFF"), "unknown format; "},
        {{}, "the file is empty"},
    };
    for (const auto& [file, cause] : cases)
        EXPECT_THAT(causeOf(decodeImage(file)), StartsWith(cause));
    EXPECT_EQ(
        causeOf(decodeImage(encodeTestTiff(blockPicture(), {.compression = COMPRESSION_LZMA}))),
        "unsupported TIFF: compression 34925");
}

}  // namespace
}  // namespace kestrelid::imagefile
