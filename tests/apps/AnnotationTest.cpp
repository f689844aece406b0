#include "apps/cli/Annotation.h"
#include "apps/cli/AnnotationNames.h"
#include "tests/apps/FakeServices.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (fs::temp_directory_path() / "kestrelid-XXXXXX").native();
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { fs::remove_all(path_); }
    [[nodiscard]] const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

Image grayPicture(int width, int height, PixelFormat format) {
    const std::ptrdiff_t stride = std::ptrdiff_t{width} * bytesPerPixel(format) + 5;
    const auto size = static_cast<std::size_t>(stride * height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::fill_n(pixels.get(), size, std::byte{128});
    return Image(*Bitmap::wrap(width, height, stride, format, pixels, size));
}

// Verdicts come from a detector only, so one judges a written picture first.
JudgedPicture judged(const std::vector<RectangleObservation>& outlines) {
    const TemporaryFolder folder;
    const fs::path path = folder.path() / "picture.png";
    EXPECT_FALSE(writeImage(path, grayPicture(400, 300, PixelFormat::rgb8)));
    auto rectangles = std::make_shared<FakeRectangles>();
    rectangles->found = outlines;
    PictureJudge judge(fakeServices(rectangles, std::make_shared<FakeText>()),
                       ValidationEffort::complete);
    return std::get<JudgedPicture>(judge.judge(path));
}

RectangleObservation outline(double left, double bottom, double right, double top) {
    return {.boundingBox = {left, bottom, right - left, top - bottom},
            .corners = {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}},
            .confidence = 1.0f};
}

bool isGreen(const Image& image, int x, int y) {
    const std::byte* pixel = image.bitmap()->row(y) + std::ptrdiff_t{3} * x;
    return std::to_integer<int>(pixel[1]) > std::to_integer<int>(pixel[0]) + 80;
}

TEST(AnnotationTest, DrawsTheOutlineInTheColourOfTheVerdictWhateverTheFormat) {
    JudgedPicture picture = judged({outline(0.25, 0.2, 0.75, 0.6), outline(0.4, 0.3, 0.6, 0.5)});
    ASSERT_TRUE(picture.result.isPassport());
    for (const PixelFormat format : {PixelFormat::rgb8, PixelFormat::bgra8, PixelFormat::gray8}) {
        picture.image = grayPicture(400, 300, format);
        const Image drawn = annotated(picture);
        ASSERT_TRUE(drawn.bitmap());
        ASSERT_EQ(drawn.bitmap()->format(), PixelFormat::rgb8);
        EXPECT_TRUE(isGreen(drawn, 100, 180));   // left side; y grows upwards in observations
        EXPECT_TRUE(isGreen(drawn, 200, 120));   // top
        EXPECT_TRUE(isGreen(drawn, 200, 240));   // bottom
        EXPECT_FALSE(isGreen(drawn, 160, 180));  // the smaller candidate
        EXPECT_FALSE(isGreen(drawn, 350, 280));  // the picture itself
        EXPECT_TRUE(isGreen(drawn, 0, 0));       // the mark beside the verdict
    }
    EXPECT_EQ(std::to_integer<int>(picture.image.bitmap()->row(180)[100]), 128);  // a copy
}

TEST(AnnotationTest, SurvivesTinyPicturesAndOutlinesBeyondTheEdge) {
    JudgedPicture picture = judged({outline(-3.0, -2.0, 5.0, 4.0)});
    picture.image = grayPicture(1, 3, PixelFormat::gray8);
    EXPECT_TRUE(annotated(picture).bitmap());
    picture.image = Image();
    EXPECT_FALSE(annotated(picture).bitmap());
}

TEST(AnnotationNamesTest, StayInTheFolderAndNeverMeetEachOtherOrAnInput) {
    const TemporaryFolder folder;
    const fs::path root = fs::canonical(folder.path());
    fs::create_directory(root / "out");
    fs::create_symlink("out", root / "link");
    std::ofstream(root / "out" / "own.jpg") << "x";

    const auto input = [&](const fs::path& path) { return PictureInput{path.native(), path}; };
    const std::vector<PictureInput> inputs{
        input(root / "a.jpg"),
        input(root / "other" / "a.HEIC"),
        input(root / "a-2.jpg"),
        input(root / "a.png"),
        input(root / "link" / "own.jpg"),  // would be replaced by its own copy
        input(root / ".."),
        input(root / "folder" / ""),
        {"-", StandardInput{}},
        input(root / "stdin.webp"),
    };
    const std::vector<std::string> expected{"a.jpg",         "a-2.jpg",   "a-2-2.jpg",
                                            "a.png",         "own-2.jpg", "picture.jpg",
                                            "picture-2.jpg", "stdin.jpg", "stdin-2.jpg"};
    const std::vector<fs::path> paths = annotationPaths(root / "out", inputs);
    ASSERT_EQ(paths.size(), expected.size());
    for (std::size_t i = 0; i < paths.size(); ++i)
        EXPECT_EQ(paths[i], root / "out" / expected[i]);
}

}  // namespace
}  // namespace kestrelid::cli
