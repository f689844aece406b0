#include "apps/cli/Annotation.h"
#include "apps/cli/AnnotationNames.h"
#include "apps/cli/PictureJudge.h"
#include "base/AsioQueue.h"

#include <kestrelid/PassportDetector.h>
#include <kestrelid/VisionServices.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace kestrelid::cli {
namespace {

namespace fs = std::filesystem;

Image grayPicture(int width, int height, PixelFormat format) {
    const std::ptrdiff_t stride = std::ptrdiff_t{width} * bytesPerPixel(format) + 5;
    const auto size = static_cast<std::size_t>(stride * height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::fill_n(pixels.get(), size, std::byte{128});
    return Image(*Bitmap::wrap(width, height, stride, format, pixels, size));
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

// Finds the outlines that it is given, and reads a word that matches four keywords.
struct Recognition final : RectangleService, TextService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override { return found; }
    TextResult perform(const Bitmap&, const TextRequest&) override {
        if (error)
            return *error;
        return std::vector{TextObservation({}, {{.string = "PASSPORT", .confidence = 1.0f}})};
    }
    std::vector<RectangleObservation> found;
    std::optional<RequestError> error;
};

struct PictureJudgeTest : testing::Test {
    std::shared_ptr<Recognition> recognition = std::make_shared<Recognition>();
    PictureJudge judge{{.rectangles = recognition,
                        .text = recognition,
                        .queue = std::make_shared<base::AsioQueue>("test", 2)},
                       ValidationEffort::complete};
    const PictureInput sample{"sample",
                              fs::path(KESTRELID_SOURCE_DIR) / "samples/bangladesh-on-wood.jpg"};
};

TEST_F(PictureJudgeTest, GivesVerdictAndOutlinesOfEachPictureAlone) {
    recognition->found = {outline(0.1, 0.1, 0.9, 0.9), outline(0.1, 0.1, 0.6, 0.5)};
    EXPECT_EQ(std::get<JudgedPicture>(judge.judge(sample)).examination.outlines.size(), 2u);

    recognition->error = RequestError{"no such library"};
    EXPECT_TRUE(std::holds_alternative<JudgeError>(judge.judge(sample)));

    recognition->error.reset();
    recognition->found.clear();
    EXPECT_TRUE(std::get<JudgedPicture>(judge.judge(sample)).examination.outlines.empty());
}

TEST_F(PictureJudgeTest, OutlineIsDrawnInTheColourOfTheVerdictWhateverTheFormat) {
    recognition->found = {outline(0.25, 0.2, 0.75, 0.6), outline(0.4, 0.3, 0.6, 0.5)};
    auto picture = std::get<JudgedPicture>(judge.judge(sample));
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
    recognition->found = {outline(-3.0, -2.0, 5.0, 4.0)};  // beyond the edges of a tiny picture
    picture = std::get<JudgedPicture>(judge.judge(sample));
    picture.image = grayPicture(1, 3, PixelFormat::gray8);
    EXPECT_TRUE(annotated(picture).bitmap());
    picture.image = Image();
    EXPECT_FALSE(annotated(picture).bitmap());
}

TEST(AnnotationNamesTest, StayInTheFolderAndNeverMeetEachOtherOrAnInput) {
    const fs::path root =
        fs::canonical(testing::TempDir()) / ("kestrelid-" + std::to_string(::getpid()));
    fs::create_directories(root / "out");
    fs::create_symlink("out", root / "link");
    std::ofstream(root / "out" / "own.jpg") << "x";
    std::vector<PictureInput> inputs;
    std::vector<fs::path> expected;
    for (const auto& [input, name] : std::vector<std::pair<fs::path, const char*>>{
             {"a.jpg", "a.jpg"},
             {"other/a.HEIC", "a-2.jpg"},
             {"a-2.jpg", "a-2-2.jpg"},
             {"link/own.jpg", "own-2.jpg"},  // would be replaced by its own copy
             {"..", "picture.jpg"},
             {"-", "stdin.jpg"},
             {"stdin.webp", "stdin-2.jpg"},
         }) {
        inputs.push_back(input == "-" ? PictureInput{"-", StandardInput{}}
                                      : PictureInput{(root / input).native(), root / input});
        expected.push_back(root / "out" / name);
    }
    EXPECT_EQ(annotationPaths(root / "out", inputs), expected);
    fs::remove_all(root);
}

}  // namespace
}  // namespace kestrelid::cli
