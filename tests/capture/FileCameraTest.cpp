#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestFiles.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <fstream>

namespace kestrelid::capture {
namespace {

using namespace test;
using namespace std::chrono_literals;

class FileCamera : public testing::Test {
protected:
    CameraOptions picture() {
        const auto path = folder / "picture.png";
        EXPECT_FALSE(writeImage(path, Image(drawing(2000, 1500))));
        return cameraNamed(path.string());
    }

    TemporaryFolder folder;
};

// At thirty frames a second; later under load, but never sooner.
void expectPaced(const CaptureRig& rig) {
    const auto started = std::chrono::steady_clock::now();
    const int before = rig.shown->count();
    ASSERT_TRUE(eventually([&] { return rig.shown->count() >= before + 45; }));
    EXPECT_GE(std::chrono::steady_clock::now() - started, 1s);
}

TEST_F(FileCamera, ShowsAPictureThatSways) {
    CaptureRig rig(picture());
    rig.taken->keeps = 2;
    ASSERT_EQ(rig.start(), "");
    EXPECT_TRUE(rig.session->isRunning());
    expectPaced(rig);

    const Bitmap frame = rig.shown->last();
    EXPECT_NEAR(frame.width() * frame.height(), 1280 * 720, 10'000);
    EXPECT_NEAR(static_cast<double>(frame.width()) / frame.height(), 4.0 / 3.0, 0.01);
    EXPECT_TRUE(isRed(frame, 0.25, 0.25));
    EXPECT_FALSE(isRed(frame, 0.75, 0.75));
    const std::vector<Bitmap> kept = rig.taken->kept();
    ASSERT_EQ(kept.size(), 2u);
    bool differ = false;
    for (int y = 0; y < frame.height(); ++y)
        differ |= std::memcmp(kept[0].row(y), kept[1].row(y),
                              std::size_t{4} * static_cast<std::size_t>(frame.width())) != 0;
    EXPECT_TRUE(differ);
}

TEST_F(FileCamera, DeliversNothingInAFormatThatItDoesNotKnow) {
    CaptureRig rig(picture());
    rig.videoOutput->setVideoSettings({.pixelFormat = 0});
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually([&] { return rig.shown->count() >= 3; }));
    EXPECT_EQ(rig.taken->count(), 0);
    rig.videoOutput->setVideoSettings({});
    EXPECT_TRUE(eventually([&] { return rig.taken->count() > 0; }));
}

TEST_F(FileCamera, TakesPhotosOfThePicturesFullSizeInOrderWhileFramesFlow) {
    CameraOptions options = picture();
    options.orientation = Orientation::right;
    CaptureRig rig(options);
    ASSERT_EQ(rig.start(), "");
    EXPECT_EQ(rig.photoOutput->maxPhotoDimensions(),
              (PhotoDimensions{.width = 2000, .height = 1500}));
    rig.takePhotos(3);
    PhotoSettings bounded;
    bounded.maxPhotoDimensions = {.width = 640, .height = 640};
    rig.takePhotos(1, bounded);
    const PhotoAnswers::Log answers = rig.photos(4);
    ASSERT_EQ(answers.size(), 4u);
    for (std::size_t index = 0; index < answers.size(); ++index) {
        EXPECT_EQ(answers[index].error, "");
        EXPECT_EQ(answers[index].number, static_cast<int>(index % 3));
        const ImageResult decoded = decodeImage(answers[index].file);
        ASSERT_TRUE(std::holds_alternative<Image>(decoded));
        const Image& image = std::get<Image>(decoded);
        EXPECT_EQ(image.orientation(), Orientation::right);
        EXPECT_EQ(image.bitmap()->width(), index < 3 ? 2000 : 640);
        EXPECT_EQ(image.bitmap()->height(), index < 3 ? 1500 : 480);
        EXPECT_TRUE(isRed(*image.bitmap(), 0.25, 0.25));
    }
    const int before = rig.shown->count();
    EXPECT_TRUE(eventually([&] { return rig.shown->count() > before; }));
    EXPECT_EQ(rig.shown->orientation, Orientation::right);
}

TEST_F(FileCamera, PlaysAFilmOverAndOver) {
    const auto film = folder / "film.avi";
    writeFilm(film, 15);
    CaptureRig rig(cameraNamed(film.string()));
    ASSERT_EQ(rig.start(), "");
    expectPaced(rig);
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_EQ(rig.shown->last().width(), 320);
    rig.takePhotos(2);
    const PhotoAnswers::Log answers = rig.photos(2);
    EXPECT_EQ(answers.size(), 2u);
    for (const PhotoAnswers::Answer& answer : answers) {
        const ImageResult decoded = decodeImage(answer.file);
        ASSERT_TRUE(std::holds_alternative<Image>(decoded));
        EXPECT_EQ(std::get<Image>(decoded).bitmap()->width(), 320);
    }
}

// 0.1 s of silence.
std::string soundFile() {
    std::string wav(
        "RIFF\x64\x06\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x80\x3e\0\0\2\0\x10\0data"
        "\x40\x06\0\0",
        44);
    return wav + std::string(1600, '\0');
}

TEST_F(FileCamera, SaysWhyAFileCannotBeShown) {
    struct Case {
        const char* name;
        std::string contents;
    };
    for (const Case& unfit :
         {Case{"text.txt", std::string(2000, 'a')}, Case{"empty.mp4", ""},
          Case{"torn.jpg", "\xff\xd8\xff\xe0 torn"}, Case{"sound.wav", soundFile()}}) {
        SCOPED_TRACE(unfit.name);
        const auto path = folder / unfit.name;
        std::ofstream(path, std::ios::binary) << unfit.contents;
        CaptureRig rig(cameraNamed(path.string()));
        const std::string error = rig.start();
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_FALSE(rig.session->isRunning());
        EXPECT_TRUE(rig.photoOutput->connections().empty());
    }
}

}  // namespace
}  // namespace kestrelid::capture
