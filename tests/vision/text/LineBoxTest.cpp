#include "vision/text/LineBox.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <cmath>
#include <numbers>

namespace kestrelid::vision {
namespace {

cv::Point2f turnedBy(cv::Point2f point, float degrees) {
    const float radians = degrees * std::numbers::pi_v<float> / 180.0f;
    return {point.x * std::cos(radians) - point.y * std::sin(radians),
            point.x * std::sin(radians) + point.y * std::cos(radians)};
}

// Five lines, a single letter and a line that runs up the margin, on a page turned about its
// centre.
std::vector<cv::RotatedRect> pageTurnedBy(float degrees) {
    const std::vector<cv::RotatedRect> upright{
        {{0, -200}, {400, 40}, 0}, {{-80, -100}, {240, 40}, 0}, {{20, 0}, {440, 40}, 0},
        {{20, 60}, {440, 40}, 0},  {{0, 120}, {400, 40}, 0},    {{120, -100}, {24, 40}, 0},
        {{-290, 0}, {36, 300}, 0}};
    std::vector<cv::RotatedRect> boxes;
    for (auto box : upright) {
        box.center = turnedBy(box.center, degrees);
        box.angle = degrees;
        if (boxes.size() % 2 == 1) {  // the same box as OpenCV may also name it
            std::swap(box.size.width, box.size.height);
            box.angle += 90.0f;
        }
        boxes.push_back(box);
    }
    return boxes;
}

class PageAtAnyAngle : public testing::TestWithParam<float> {};

TEST_P(PageAtAnyAngle, LinesShareThePagesDirection) {
    const float degrees = GetParam();
    const PageLines page = alignToPage(pageTurnedBy(degrees));
    const cv::Point2f expected = turnedBy({1, 0}, degrees);
    EXPECT_NEAR(std::abs(page.along.dot(expected)), 1.0f, 1e-3f);
    ASSERT_EQ(page.lines.size(), 7u);
    for (std::size_t index = 0; index < 6; ++index) {
        SCOPED_TRACE(index);
        EXPECT_FALSE(page.lines[index].crosswise);
        EXPECT_NEAR(page.lines[index].along.dot(page.along), 1.0f, 1e-3f);
        EXPECT_NEAR(page.lines[index].height, 40.0f, 0.1f)
            << "a narrow letter is no line up the page";
    }
    EXPECT_TRUE(page.lines[6].crosswise);
    EXPECT_NEAR(page.lines[6].length, 300.0f, 0.1f);
    EXPECT_NEAR(page.lines[6].along.dot(page.along), 0.0f, 1e-3f);
}

INSTANTIATE_TEST_SUITE_P(Degrees, PageAtAnyAngle,
                         testing::Values(0.0f, 7.0f, -7.0f, 44.0f, 46.0f, 89.0f, 91.0f, 135.0f,
                                         180.0f, 270.0f));

TEST(LineBox, CropStandsUprightWhicheverWayTheLineRuns) {
    // Left half red, right half blue, white above and green below, as it is read.
    constexpr int kLength = 200;
    constexpr int kHeight = 40;
    for (const float degrees : {0.0f, 30.0f, 90.0f, 180.0f, 250.0f}) {
        SCOPED_TRACE(degrees);
        cv::Mat picture(400, 400, CV_8UC3, cv::Scalar::all(0));
        LineBox line{{210, 190}, turnedBy({1, 0}, degrees), kLength, kHeight, false};
        const auto paint = [&](float x, float y, const cv::Scalar& colour) {
            const auto corners = LineBox{line.center + line.along * x + line.down() * y, line.along,
                                         kLength / 2.0f, kHeight / 2.0f, false}
                                     .corners();
            cv::fillConvexPoly(picture, std::vector<cv::Point>(corners.begin(), corners.end()),
                               colour);
        };
        paint(-kLength / 4.0f, -kHeight / 4.0f, {0, 0, 255});
        paint(kLength / 4.0f, -kHeight / 4.0f, {255, 0, 0});
        paint(-kLength / 4.0f, kHeight / 4.0f, {255, 255, 255});
        paint(kLength / 4.0f, kHeight / 4.0f, {0, 255, 0});
        for (const int height : {20, 48}) {
            const cv::Mat crop = cropLine(picture, line, height, 2400);
            ASSERT_EQ(crop.size(), cv::Size(height * kLength / kHeight, height));
            const int right = crop.cols * 3 / 4;
            const int bottom = crop.rows * 3 / 4;
            EXPECT_EQ(crop.at<cv::Vec3b>(crop.rows / 4, crop.cols / 4), cv::Vec3b(0, 0, 255));
            EXPECT_EQ(crop.at<cv::Vec3b>(crop.rows / 4, right), cv::Vec3b(255, 0, 0));
            EXPECT_EQ(crop.at<cv::Vec3b>(bottom, crop.cols / 4), cv::Vec3b(255, 255, 255));
            EXPECT_EQ(crop.at<cv::Vec3b>(bottom, right), cv::Vec3b(0, 255, 0));
        }
        EXPECT_EQ(cropLine(picture, line, 48, 100).cols, 100) << "longer lines are squeezed";
    }
}

}  // namespace
}  // namespace kestrelid::vision
