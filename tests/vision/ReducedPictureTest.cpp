#include "vision/ReducedPicture.h"

#include "base/PixelStore.h"

#include <cstring>
#include <gmock/gmock.h>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {
namespace {

// Halved on the way or not, each pixel stands for its part of the picture.
TEST(ReducedPicture, IsResizedWithoutMovingAnything) {
    for (const cv::Size from : {cv::Size(1601, 1203), cv::Size(500, 900), cv::Size(210, 150)}) {
        cv::Mat3b picture(from);
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < from.width; ++x)
                picture(y, x) = {static_cast<std::uint8_t>(255 * x / from.width),
                                 static_cast<std::uint8_t>(255 * y / from.height),
                                 static_cast<std::uint8_t>(255 * (x > from.width / 2))};
        const cv::Size to(192, 144);
        const cv::Mat small = resized(picture, to);
        ASSERT_EQ(small.size(), to);
        cv::Mat averaged;
        cv::resize(picture, averaged, to, 0, 0, cv::INTER_AREA);
        cv::Mat apart;
        cv::absdiff(small, averaged, apart);
        EXPECT_LE(cv::norm(apart, cv::NORM_L1) / static_cast<double>(3 * to.area()), 0.4)
            << from;  // of 255
    }
}

// Sides of cameras, scanners and slivers, and what is read from where 1800 pixels are enough.
TEST(ReducedPicture, KeepsWhatIsEnough) {
    struct Case {
        cv::Size from;
        cv::Size to;
    };
    for (const auto& [from, to] :
         {Case{{640, 480}, {640, 480}}, Case{{1920, 1080}, {1920, 1080}},
          Case{{2400, 1800}, {2400, 1800}}, Case{{2592, 1944}, {1800, 1350}},
          Case{{3001, 4003}, {1500, 2001}}, Case{{20000, 9}, {1800, 1}}}) {
        base::PixelStore store(from.width, from.height, 3);
        std::memset(store.bytes(), 77, store.size());
        const Image image = std::move(store).toImage(PixelFormat::rgb8, Orientation::up);
        const cv::Mat picture = reducedPicture(*image.bitmap(), 1800);
        EXPECT_EQ(picture.size(), to) << from;
        EXPECT_NE(picture.data, viewOf(*image.bitmap()).data) << from;
        EXPECT_EQ(cv::mean(picture), cv::Scalar(77, 77, 77)) << from;
    }
}

}  // namespace
}  // namespace kestrelid::vision
