#include "vision/text/LineBox.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <array>
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

TEST(LineBox, LinesShareThePagesDirectionAtAnyAngle) {
    for (const float degrees : {0.0f, -7.0f, 44.0f, 46.0f, 91.0f, 180.0f, 270.0f}) {
        SCOPED_TRACE(degrees);
        const PageLines page = alignToPage(pageTurnedBy(degrees));
        EXPECT_NEAR(std::abs(page.along.dot(turnedBy({1, 0}, degrees))), 1.0f, 1e-3f);
        ASSERT_EQ(page.lines.size(), 7u);
        for (std::size_t index = 0; index < 6; ++index) {
            EXPECT_FALSE(page.lines[index].crosswise) << index;
            EXPECT_NEAR(page.lines[index].along.dot(page.along), 1.0f, 1e-3f) << index;
            EXPECT_NEAR(page.lines[index].height, 40.0f, 0.1f) << index;
        }
        EXPECT_TRUE(page.lines[6].crosswise);
        EXPECT_NEAR(page.lines[6].length, 300.0f, 0.1f);
        EXPECT_NEAR(page.lines[6].along.dot(page.along), 0.0f, 1e-3f);
    }
}

TEST(LineBox, CropStandsUprightWhicheverWayTheLineRuns) {
    constexpr int kLength = 200;
    constexpr int kHeight = 40;
    // As it is read: red and blue above, white and green below.
    const std::array<cv::Vec3b, 4> colours{
        {{0, 0, 255}, {255, 0, 0}, {255, 255, 255}, {0, 255, 0}}};
    for (const float degrees : {0.0f, 30.0f, 90.0f, 180.0f, 250.0f}) {
        SCOPED_TRACE(degrees);
        cv::Mat3b picture(400, 400, cv::Vec3b());
        const LineBox line{{210, 190}, turnedBy({1, 0}, degrees), kLength, kHeight, false};
        for (int part = 0; part < 4; ++part) {
            const float x = kLength * (part % 2 == 0 ? -0.25f : 0.25f);
            const float y = kHeight * (part < 2 ? -0.25f : 0.25f);
            const LineBox quarter{line.center + line.along * x + line.down() * y, line.along,
                                  kLength / 2.0f, kHeight / 2.0f, false};
            const auto corners = quarter.corners();
            cv::fillConvexPoly(picture, std::vector<cv::Point>(corners.begin(), corners.end()),
                               colours[static_cast<std::size_t>(part)]);
        }
        for (const int height : {20, 48}) {
            const cv::Mat3b crop = cropLine(picture, line, height, 2400);
            ASSERT_EQ(crop.size(), cv::Size(height * kLength / kHeight, height));
            for (int part = 0; part < 4; ++part)
                EXPECT_EQ(crop(crop.rows * (part < 2 ? 1 : 3) / 4,
                               crop.cols * (part % 2 == 0 ? 1 : 3) / 4),
                          colours[static_cast<std::size_t>(part)]);
        }
        EXPECT_EQ(cropLine(picture, line, 48, 100).cols, 100) << "longer lines are squeezed";
    }
}

}  // namespace
}  // namespace kestrelid::vision
