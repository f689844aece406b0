#include "vision/ReducedPicture.h"

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

}  // namespace
}  // namespace kestrelid::vision
