#include "vision/outlines/FullPageFinder.h"
#include "vision/outlines/PrintBlockFinder.h"

#include "tests/vision/outlines/DrawnScenes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <string>

namespace kestrelid::vision {

namespace {

Scene sceneOf(const cv::Mat3b& bgr) {
    const WorkingPicture picture = makeWorkingPicture(test::bitmapOf(bgr, PixelFormat::bgra8), 512);
    return {.picture = picture, .edges = makeEdgeField(picture), .text = findTextLayout(picture)};
}

double fullPageConfidence(const cv::Mat3b& bgr) {
    return FullPageFinder().find(sceneOf(bgr)).at(0).confidence;
}

// Lines of print from left to right, one below the other.
void printLines(cv::Mat3b& picture, const cv::Rect& place, int pitch,
                const std::string& text = "SPECIMEN TEXT 1974 EXAMPLE LINE") {
    for (int y = place.y + pitch; y < place.br().y; y += pitch) {
        cv::putText(picture, text, {place.x, y}, cv::FONT_HERSHEY_SIMPLEX, place.width / 580.0,
                    {30, 30, 30}, 1, cv::LINE_AA);
    }
}

TEST(FullPageFinderTest, AsksForParallelPrintWithMarginsAllOver) {
    const cv::Mat3b paper = cv::Mat3b(360, 500, {210, 220, 215});

    cv::Mat3b page = paper.clone();
    printLines(page, {40, 20, 420, 320}, 24);
    EXPECT_GT(fullPageConfidence(page), 0.6);

    cv::Mat3b corner = paper.clone();
    printLines(corner, {20, 20, 210, 70}, 14);
    EXPECT_LT(fullPageConfidence(corner), 0.4);

    cv::Mat3b runningOut = paper.clone();
    printLines(runningOut, {-20, 20, 560, 320}, 24, "QWERTYUIOPASDFGHJKLZXCVBNMQWERTYU");
    EXPECT_LT(fullPageConfidence(runningOut), 0.4);

    // Signs and labels about a room: print, but every piece at its own angle.
    cv::Mat3b scattered = paper.clone();
    for (int i = 0; i < 12; ++i) {
        const cv::Point2f centre(85.0f + 110.0f * static_cast<float>(i % 4),
                                 70.0f + 110.0f * static_cast<float>(i / 4));
        cv::Mat3b label = paper.clone();
        printLines(label, {cvRound(centre.x) - 45, cvRound(centre.y) - 15, 90, 30}, 12);
        cv::warpAffine(label, label, cv::getRotationMatrix2D(centre, 17.0 * i - 90.0, 1.0),
                       label.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
        scattered = cv::min(scattered, label);
    }
    EXPECT_LT(fullPageConfidence(scattered), 0.4);
}

TEST(PrintBlockFinderTest, EnclosesABlockOfPrintAndLeavesSingleLinesOut) {
    cv::Mat3b picture(400, 512, {200, 205, 210});
    const cv::Rect block(120, 140, 200, 130);
    printLines(picture, block, 16);
    printLines(picture, {20, 20, 200, 20}, 14);
    const auto found = PrintBlockFinder().find(sceneOf(picture));
    const auto best =
        std::ranges::max_element(found, {}, [](const auto& each) { return each.confidence; });
    ASSERT_NE(best, found.end());
    EXPECT_GT(best->confidence, 0.4);
    EXPECT_TRUE(contains(best->quad, {121, 150}));
    EXPECT_TRUE(contains(best->quad, {300, 265}));
    EXPECT_FALSE(contains(best->quad, {60, 35}));
    EXPECT_LT(area(best->quad), 2.0 * block.area());
}

}  // namespace

}  // namespace kestrelid::vision
