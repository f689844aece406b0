#include "vision/outlines/OpenCvRectangleService.h"

#include "tests/vision/outlines/DrawnScenes.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace kestrelid::vision {

namespace {

using test::bitmapOf;

std::vector<RectangleObservation> rectanglesOf(const Bitmap& bitmap,
                                               const RectangleRequest& request = {}) {
    OpenCvRectangleService service;
    return std::get<std::vector<RectangleObservation>>(service.perform(bitmap, request));
}

// What the detector goes on with; an empty box where there is none.
NormalizedRect largestBox(const std::vector<RectangleObservation>& rectangles) {
    NormalizedRect largest;
    for (const RectangleObservation& rectangle : rectangles) {
        if (rectangle.boundingBox.area() > largest.area()) {
            largest = rectangle.boundingBox;
        }
    }
    return largest;
}

NormalizedRect boxOf(const Quad& corners, cv::Size size) {
    const cv::Rect2f box = clippedBox(corners, size);
    return {double{box.x} / size.width, 1.0 - double{box.br().y} / size.height,
            double{box.width} / size.width, double{box.height} / size.height};
}

double overlap(const NormalizedRect& a, const NormalizedRect& b) {
    const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    const double shared = std::max(width, 0.0) * std::max(height, 0.0);
    return shared / std::max(a.area() + b.area() - shared, 1e-9);
}

const cv::Size kFrame{960, 540};
const Quad kTilted{cv::Point2f{214, 82}, {742, 128}, {704, 482}, {168, 430}};
const Quad kUpright{cv::Point2f{340, 30}, {690, 44}, {672, 520}, {330, 500}};

cv::Mat3b turned(const cv::Mat3b& page, int quarterTurns) {
    cv::Mat3b result = page.clone();
    if (quarterTurns > 0)
        cv::rotate(page, result, quarterTurns - 1);
    return result;
}

cv::Mat3b pageOnDesk(int quarterTurns = 0) {
    return test::laidOn(test::grain(kFrame, 5), turned(test::drawnPage(), quarterTurns),
                        quarterTurns % 2 == 0 ? kTilted : kUpright);
}

TEST(OpenCvRectangleServiceTest, PageOnDeskIsTheLargestRectangle) {
    for (const int quarterTurns : {0, 1, 2, 3}) {
        for (const auto format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8}) {
            SCOPED_TRACE(testing::Message() << quarterTurns << " turns, " << bytesPerPixel(format));
            const Quad& quad = quarterTurns % 2 == 0 ? kTilted : kUpright;
            const auto rectangles = rectanglesOf(bitmapOf(pageOnDesk(quarterTurns), format));
            ASSERT_FALSE(rectangles.empty());
            EXPECT_GT(overlap(largestBox(rectangles), boxOf(quad, kFrame)), 0.92);
            // Named by where they are seen, whichever way the page lies.
            for (std::size_t i = 0; i < 4; ++i) {
                const NormalizedPoint& corner = rectangles.front().corners[i];
                EXPECT_NEAR(corner.x, double{quad[i].x} / kFrame.width, 0.02) << i;
                EXPECT_NEAR(corner.y, 1.0 - double{quad[i].y} / kFrame.height, 0.02) << i;
            }
        }
    }
}

TEST(OpenCvRectangleServiceTest, FindsPagesOnDifficultGround) {
    const Quad cutOff{cv::Point2f{330, 60}, {1090, 90}, {1075, 620}, {300, 570}};
    const cv::Mat3b page = test::drawnPage();
    cv::Mat3b framed = test::drawnPage();
    cv::rectangle(framed, {215, 75}, {690, 385}, {30, 30, 30}, 4);
    cv::rectangle(framed, {0, 400}, {709, 499}, {250, 250, 250}, 4);
    const struct {
        const char* name;
        cv::Mat3b desk;
        cv::Mat3b page;
        Quad corners;
        double leastOverlap;
    } rows[] = {{"keyboard", test::keys(kFrame, 60, true), page, kTilted, 0.9},
                {"cutOffByTheBorder", cv::Mat3b(kFrame, {70, 60, 60}), page, cutOff, 0.85},
                {"frameInsideThePage", cv::Mat3b(kFrame, {95, 80, 75}), framed, kTilted, 0.9}};
    for (const auto& row : rows) {
        const auto scene = test::laidOn(row.desk, row.page, row.corners);
        const NormalizedRect box = largestBox(rectanglesOf(bitmapOf(scene, PixelFormat::bgra8)));
        EXPECT_GT(overlap(box, boxOf(row.corners, kFrame)), row.leastOverlap) << row.name;
        EXPECT_GE(std::min(box.x, box.y), 0.0) << row.name;
        EXPECT_LE(std::max(box.x + box.width, box.y + box.height), 1.0 + 1e-9) << row.name;
    }
}

TEST(OpenCvRectangleServiceTest, PageThatFillsThePictureIsFoundWhole) {
    for (const int quarterTurns : {0, 1}) {
        const cv::Mat3b scene = turned(test::drawnPage(), quarterTurns);
        const auto rectangles = rectanglesOf(bitmapOf(scene, PixelFormat::rgb8));
        EXPECT_GT(largestBox(rectangles).area(), 0.85) << quarterTurns << " quarter turns";
    }
}

TEST(OpenCvRectangleServiceTest, ScenesWithoutPageHaveNoLargeRectangle) {
    const std::pair<const char*, cv::Mat3b> scenes[] = {
        {"noise", test::noise(kFrame, 45.0, 2)},    {"woodGrain", test::grain(kFrame, 3)},
        {"darkKeys", test::keys(kFrame, 64, true)}, {"lightKeys", test::keys(kFrame, 64, false)},
        {"onePixel", test::noise({1, 1}, 60.0, 9)}, {"thin", test::noise({1, 5000}, 60.0, 9)},
        {"low", test::noise({4000, 40}, 60.0, 9)}};
    for (const auto& [name, scene] : scenes) {
        const Bitmap bitmap = bitmapOf(scene, PixelFormat::bgra8);
        EXPECT_LT(largestBox(rectanglesOf(bitmap)).area(), 0.15) << name;
    }
}

TEST(OpenCvRectangleServiceTest, HonoursTheLimitsOfTheRequest) {
    const Bitmap bitmap = bitmapOf(pageOnDesk(), PixelFormat::bgra8);
    const auto found = rectanglesOf(bitmap);
    ASSERT_FALSE(found.empty());
    EXPECT_GE(found.front().confidence, RectangleRequest{}.minimumConfidence);
    EXPECT_LE(found.front().confidence, 1.0f);
    for (const int most : {0, -1})
        EXPECT_TRUE(rectanglesOf(bitmap, {.maximumObservations = most}).empty()) << most;
    EXPECT_TRUE(rectanglesOf(bitmap, {.minimumConfidence = 1.1f}).empty());
    const auto isNotThePage = testing::Each(
        testing::Field(&RectangleObservation::boundingBox, testing::Ne(found.front().boundingBox)));
    // The page is 1.5 times as wide as high.
    EXPECT_THAT(rectanglesOf(bitmap, {.maximumAspectRatio = 1.2f}), isNotThePage);
    EXPECT_THAT(rectanglesOf(bitmap, {.minimumAspectRatio = 1.8f}), isNotThePage);
}

}  // namespace

}  // namespace kestrelid::vision
