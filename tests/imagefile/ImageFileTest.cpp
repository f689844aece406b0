#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/FileBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace kestrelid::imagefile {
namespace {

namespace fs = std::filesystem;

class ImageFile : public testing::Test {
protected:
    [[nodiscard]] fs::path write(const char* name, const Bytes& contents) const {
        std::ofstream(folder_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(contents.data()),
                   static_cast<std::streamsize>(contents.size()));
        return folder_ / name;
    }
    [[nodiscard]] std::size_t filesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
    }

    test::TemporaryFolder folder_;
};

TEST_F(ImageFile, IsReadByItsContentsWhateverItsName) {
    const Image image = imageOf(readImage(write("blocks.jpg", pictureFile("rows.png"))));
    ASSERT_TRUE(image.bitmap());
    EXPECT_EQ(differenceFromBlocks(*image.bitmap(), 0), "");
    EXPECT_THAT(causeOf(readImage(write("notes.png", Bytes(10)))),
                testing::StartsWith("unknown format"));
}

TEST_F(ImageFile, OfNoUseIsAnErrorWithItsCause) {
    const fs::path pipe = folder_ / "pipe.jpg";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const fs::path large = write("large.jpg", {});
    fs::resize_file(large, kMaximumFileSize + 1);  // sparse
    const std::pair<fs::path, const char*> cases[] = {
        {folder_ / "missing.jpg", "cannot be opened: No such file or directory"},
        {folder_.path(), "it is a directory"},
        {pipe, "it is not a regular file"},
        {"/dev/zero", "it is not a regular file"},
        {large, "the file has 67108865 bytes, at most 67108864 are read"},
        {write("empty.jpg", {}), "the file is empty"},
    };
    for (const auto& [path, cause] : cases)
        EXPECT_EQ(causeOf(readImage(path)), cause) << path;
}

Bitmap withFormat(PixelFormat format) {
    const int pixel = bytesPerPixel(format);
    const bool isBlueFirst = format == PixelFormat::bgra8 || format == PixelFormat::bgr8;
    const int stride = kWidth * pixel + 5;
    const std::size_t size = static_cast<std::size_t>(stride) * kHeight;
    auto pixels = std::make_shared<std::byte[]>(size);  // the fourth byte, 0, is no transparency
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const Rgb& color = kBlockColors[static_cast<std::size_t>(y / 16 * kColumns + x / 16)];
            std::byte* to = pixels.get() + y * stride + x * pixel;
            to[0] = static_cast<std::byte>(lumaOf(color));
            for (std::size_t channel = 0; channel < 3 && pixel > 1; ++channel)
                to[channel] = static_cast<std::byte>(color[isBlueFirst ? 2 - channel : channel]);
        }
    return Bitmap::wrap(kWidth, kHeight, stride, format, std::move(pixels), size).value();
}

TEST_F(ImageFile, IsWrittenAsItIsShown) {
    const std::pair<const char*, int> names[] = {
        {"a.png", 0}, {"b.PNG", 0}, {"c.jpg", 8}, {"d.JPEG", 8}};
    for (const PixelFormat format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8,
                                     PixelFormat::bgr8, PixelFormat::rgba8}) {
        for (const auto& [name, tolerance] : names) {
            const auto error =
                writeImage(folder_ / name, Image(withFormat(format), Orientation::left));
            ASSERT_FALSE(error) << error->cause;
            const Image read = imageOf(readImage(folder_ / name));
            EXPECT_EQ(read.orientation(), Orientation::up);
            ASSERT_TRUE(read.bitmap());
            EXPECT_EQ(read.bitmap()->format() == PixelFormat::gray8, format == PixelFormat::gray8);
            const Image stored = Image(*read.bitmap(), Orientation::right).upright();
            ASSERT_EQ(stored.bitmap()->width(), kWidth);
            EXPECT_EQ(differenceFromBlocks(*stored.bitmap(), tolerance), "") << name;
        }
    }
    EXPECT_EQ(filesInFolder(), std::size(names)) << "temporary files are left";
}

TEST_F(ImageFile, ThatCannotBeWrittenLeavesNothingBehind) {
    fs::create_directory(folder_ / "folder.png");
    const Image image(withFormat(PixelFormat::rgb8));
    const std::pair<const char*, const char*> cases[] = {
        {"picture.gif", "pictures are written as .jpg, .jpeg or .png"},
        {"png", "pictures are written as .jpg, .jpeg or .png"},
        {"missing/picture.png", "cannot be written: No such file or directory"},
        {"folder.png", "cannot be written: Is a directory"},
    };
    for (const auto& [name, cause] : cases) {
        const auto error = writeImage(folder_ / name, image);
        ASSERT_TRUE(error) << name;
        EXPECT_EQ(error->cause, cause) << name;
    }
    EXPECT_EQ(writeImage(folder_ / "none.png", Image())->cause, "the image has no bitmap");

    const fs::path kept = write("kept.jpg", pictureFile("rows.png"));
    const std::size_t size = 70'000;  // more than the 65535 pixels that a JPEG can have in a row
    const auto wide = Bitmap::wrap(70'000, 1, 70'000, PixelFormat::gray8,
                                   std::make_shared<std::byte[]>(size), size);
    EXPECT_THAT(writeImage(kept, Image(*wide))->cause, testing::StartsWith("JPEG encoder: "));
    EXPECT_TRUE(imageOf(readImage(kept)).bitmap());
    EXPECT_EQ(filesInFolder(), 2u) << "temporary files are left";
}

}  // namespace
}  // namespace kestrelid::imagefile
