#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestFiles.h"

#include "base/AsioQueue.h"

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

// Starts at thirty frames a second. A busy machine shows them late, but never sooner.
void startPaced(CaptureRig& rig) {
    const auto before = std::chrono::steady_clock::now();
    ASSERT_EQ(rig.start(), "");
    ASSERT_TRUE(eventually(
        [&] { return rig.shown->count() >= 45 && rig.taken->count() >= rig.taken->keeps; }));
    EXPECT_GE(std::chrono::steady_clock::now() - before, 1s);
}

TEST_F(FileCamera, ShowsAPictureThatSways) {
    CaptureRig rig(picture());
    rig.taken->keeps = 2;
    startPaced(rig);
    const Bitmap frame = rig.shown->last();
    EXPECT_NEAR(frame.width() * frame.height(), 1280 * 720, 10'000);
    EXPECT_NEAR(static_cast<double>(frame.width()) / frame.height(), 4.0 / 3.0, 0.01);
    EXPECT_TRUE(isRed(frame, 0.25, 0.25));
    EXPECT_FALSE(isRed(frame, 0.75, 0.75));
    const std::vector<Bitmap> kept = rig.taken->kept();
    ASSERT_EQ(kept.size(), 2u);
    int same = 0;
    while (same < frame.height() &&
           std::memcmp(kept[0].row(same), kept[1].row(same), std::size_t{4} * 1000) == 0)
        ++same;
    EXPECT_LT(same, frame.height());
    rig.videoOutput->setVideoSettings({.pixelFormat = 0});
    const auto late = std::make_shared<TakenFrames>();
    rig.videoOutput->setSampleBufferDelegate(late, std::make_shared<base::AsioQueue>("late", 1));
    const int before = rig.shown->count();
    ASSERT_TRUE(eventually([&] { return rig.shown->count() >= before + 3; }));
    EXPECT_EQ(late->count(), 0) << "nothing comes in a format that it does not know";
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
    startPaced(rig);
    EXPECT_TRUE(rig.session->isRunning());
    EXPECT_EQ(rig.shown->last().width(), 320);
    rig.takePhotos(1);
    const ImageResult decoded = decodeImage(rig.photos(1).at(0).file);
    ASSERT_TRUE(std::holds_alternative<Image>(decoded));
    EXPECT_EQ(std::get<Image>(decoded).bitmap()->width(), 320);
}

TEST_F(FileCamera, SaysWhyAFileCannotBeShown) {
    for (const auto& [name, contents] :
         {std::pair{"text.txt", std::string(2000, 'a')}, std::pair{"empty.mp4", std::string()},
          std::pair{"torn.jpg", std::string("\xff\xd8\xff\xe0 torn")}}) {
        SCOPED_TRACE(name);
        std::ofstream(folder / name, std::ios::binary) << contents;
        CaptureRig rig(cameraNamed((folder / name).string()));
        const std::string error = rig.start();
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(error.find('\n'), std::string::npos);
        EXPECT_FALSE(rig.session->isRunning());
        EXPECT_TRUE(rig.photoOutput->connections().empty());
    }
}

}  // namespace
}  // namespace kestrelid::capture
