#include "vision/outlines/WorkingPicture.h"

#include "tests/vision/outlines/DrawnScenes.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

TEST(WorkingPictureTest, KeepsProportionsAndNeverEnlarges) {
    const auto sizeOf = [](cv::Size size) {
        const auto bitmap = test::bitmapOf(cv::Mat3b(size, {9, 9, 9}), PixelFormat::gray8);
        return makeWorkingPicture(bitmap, 512).size();
    };
    EXPECT_EQ(sizeOf({1280, 720}), cv::Size(512, 288));
    EXPECT_EQ(sizeOf({3000, 4000}), cv::Size(384, 512));
    EXPECT_EQ(sizeOf({200, 100}), cv::Size(200, 100));
    EXPECT_EQ(sizeOf({1, 5000}), cv::Size(1, 512));
}

TEST(WorkingPictureTest, ColourFormatsAgree) {
    const cv::Mat3b page = test::drawnPage();
    const WorkingPicture bgra = makeWorkingPicture(test::bitmapOf(page, PixelFormat::bgra8), 512);
    const WorkingPicture grey = makeWorkingPicture(test::bitmapOf(page, PixelFormat::gray8), 512);
    for (const PixelFormat format : {PixelFormat::rgb8, PixelFormat::bgr8, PixelFormat::rgba8}) {
        const WorkingPicture other = makeWorkingPicture(test::bitmapOf(page, format), 512);
        EXPECT_EQ(cv::norm(bgra.luma, other.luma, cv::NORM_INF), 0.0);
        EXPECT_EQ(cv::norm(bgra.colour, other.colour, cv::NORM_INF), 0.0);
    }
    EXPECT_LE(cv::norm(bgra.luma, grey.luma, cv::NORM_INF), 2.0);
    EXPECT_TRUE(grey.colour.empty());
}

TEST(WorkingPictureTest, BrightensDimPicturesOnly) {
    cv::Mat3b dim;
    test::drawnPage().convertTo(dim, -1, 0.15);
    const auto meanOf = [](const cv::Mat3b& picture) {
        return cv::mean(
            makeWorkingPicture(test::bitmapOf(picture, PixelFormat::bgra8), 512).luma)[0];
    };
    EXPECT_NEAR(meanOf(dim), meanOf(test::drawnPage()), 20.0);
    EXPECT_EQ(meanOf(cv::Mat3b(64, 64, cv::Vec3b())), 0.0);
}

}  // namespace

}  // namespace kestrelid::vision
