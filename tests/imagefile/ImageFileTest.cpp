#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/EncodedPictures.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace kestrelid::imagefile {
namespace {

namespace fs = std::filesystem;

// An empty folder that goes with the test.
class ImageFile : public testing::Test {
protected:
    ImageFile() {
        std::string name = (fs::temp_directory_path() / "kestrelid-image-XXXXXX").string();
        if (::mkdtemp(name.data()))
            folder_ = name;
    }
    ~ImageFile() override {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    [[nodiscard]] fs::path write(const char* name, const Bytes& contents) const {
        std::ofstream(folder_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(contents.data()),
                   static_cast<std::streamsize>(contents.size()));
        return folder_ / name;
    }
    [[nodiscard]] std::size_t filesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    fs::path folder_;
};

TEST_F(ImageFile, IsReadByItsContentsWhateverItsName) {
    const Image image = imageOf(readImage(write("blocks.jpg", encodeTestPng(blockPicture()))));
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
        {folder_, "it is a directory"},
        {pipe, "it is not a regular file"},
        {"/dev/zero", "it is not a regular file"},
        {large, "the file has 67108865 bytes, at most 67108864 are read"},
        {write("empty.jpg", {}), "the file is empty"},
    };
    for (const auto& [path, cause] : cases)
        EXPECT_EQ(causeOf(readImage(path)), cause) << path;
}

TEST_F(ImageFile, WithoutPermissionIsAnError) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads everything; an ordinary user brings this back";
    const fs::path path = write("private.png", encodeTestPng(blockPicture()));
    fs::permissions(path, fs::perms::none);
    EXPECT_EQ(causeOf(readImage(path)), "cannot be opened: Permission denied");
}

Bitmap withFormat(PixelFormat format) {
    const Bitmap rgb = blockPicture();
    const int pixel = bytesPerPixel(format);
    const int stride = rgb.width() * pixel + 5;
    const std::size_t size = static_cast<std::size_t>(stride) * rgb.height();
    auto pixels = std::make_shared<std::byte[]>(size);  // the fourth byte, 0, is no transparency
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            const std::byte* from = rgb.row(y) + x * 3;
            std::byte* to = pixels.get() + y * stride + x * pixel;
            for (int channel = 0; channel < 3 && pixel > 1; ++channel)
                to[channel] = from[pixel == 4 ? 2 - channel : channel];
            if (pixel == 1)
                to[0] = static_cast<std::byte>(lumaOf(colorAt(rgb, x, y)));
        }
    return Bitmap::wrap(rgb.width(), rgb.height(), stride, format, std::move(pixels), size).value();
}

TEST_F(ImageFile, IsWrittenAsItIsShown) {
    const std::pair<const char*, int> names[] = {
        {"a.png", 0}, {"b.PNG", 0}, {"c.jpg", 8}, {"d.JPEG", 8}};
    for (const PixelFormat format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8}) {
        for (const auto& [name, tolerance] : names) {
            const auto error =
                writeImage(folder_ / name, Image(withFormat(format), Orientation::left));
            ASSERT_FALSE(error) << error->cause;
            const Image read = imageOf(readImage(folder_ / name));
            EXPECT_EQ(read.orientation(), Orientation::up);
            ASSERT_TRUE(read.bitmap());
            EXPECT_EQ(read.bitmap()->format() == PixelFormat::gray8, format == PixelFormat::gray8);
            const Image stored = Image(*read.bitmap(), Orientation::right).upright();
            ASSERT_EQ(stored.bitmap()->width(), blockPicture().width());
            EXPECT_EQ(differenceFromBlocks(*stored.bitmap(), tolerance), "") << name;
        }
    }
    EXPECT_EQ(filesInFolder(), std::size(names)) << "temporary files are left";
}

TEST_F(ImageFile, ThatCannotBeWrittenLeavesNothingBehind) {
    fs::create_directory(folder_ / "folder.png");
    const Image image(blockPicture());
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

    const fs::path kept = write("kept.jpg", encodeTestPng(blockPicture()));
    const std::size_t size = 70'000;  // more than the 65535 pixels that a JPEG can have in a row
    const auto wide = Bitmap::wrap(70'000, 1, 70'000, PixelFormat::gray8,
                                   std::make_shared<std::byte[]>(size), size);
    EXPECT_THAT(writeImage(kept, Image(*wide))->cause, testing::StartsWith("JPEG encoder: "));
    EXPECT_TRUE(imageOf(readImage(kept)).bitmap());
    EXPECT_EQ(filesInFolder(), 2u) << "temporary files are left";
}

}  // namespace
}  // namespace kestrelid::imagefile
