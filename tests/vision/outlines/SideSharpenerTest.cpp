#include "vision/outlines/SideSharpener.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <vector>

namespace kestrelid::vision {
namespace {

const cv::Size kSize(1280, 720);

// A page a little brighter than a grainy desk, with print that begins 20 pixels inside.
cv::Mat pageOnDesk(const Quad& quad) {
    cv::Mat picture(kSize, CV_8UC3, cv::Scalar(150, 155, 160));
    std::vector<cv::Point> corners;
    for (const cv::Point2f& corner : quad)
        corners.emplace_back(corner);
    cv::fillConvexPoly(picture, corners, cv::Scalar(200, 205, 200), cv::LINE_AA);
    for (int line = 0; line < 8; ++line) {
        const int y = cvRound(quad[0].y) + 60 + 40 * line;
        cv::line(picture, {cvRound(quad[0].x) + 40, y}, {cvRound(quad[1].x) - 60, y},
                 cv::Scalar(60, 60, 60), 8);
    }
    cv::Mat grain(kSize, CV_8UC3);
    cv::RNG random(7);
    random.fill(grain, cv::RNG::NORMAL, 20, 4);
    return picture + grain - cv::Scalar::all(20);
}

double greatestDistance(const Quad& a, const Quad& b) {
    double greatest = 0.0;
    for (std::size_t i = 0; i < 4; ++i)
        greatest = std::max(greatest, cv::norm(a[i] - b[i]));
    return greatest;
}

TEST(SideSharpenerTest, sidesAFewPixelsOffMoveOntoTheEdges) {
    const Quad truth{{{300.0f, 120.0f}, {1000.0f, 150.0f}, {980.0f, 620.0f}, {280.0f, 600.0f}}};
    const cv::Mat picture = pageOnDesk(truth);
    for (const float off : {-7.0f, -3.0f, 0.0f, 4.0f, 7.0f}) {
        const Quad start{
            {truth[0] + cv::Point2f(off, off), truth[1] + cv::Point2f(-off, 0.6f * off),
             truth[2] - cv::Point2f(0.4f * off, off), truth[3] + cv::Point2f(off, -0.8f * off)}};
        EXPECT_LT(greatestDistance(sharpened(picture, start), truth), 2.0) << off;
    }
}

TEST(SideSharpenerTest, withoutEdgesNothingMoves) {
    cv::Mat picture(kSize, CV_8UC3);
    cv::RNG random(3);
    random.fill(picture, cv::RNG::NORMAL, 120, 3);
    const Quad quad{{{300.0f, 120.0f}, {1000.0f, 150.0f}, {980.0f, 620.0f}, {280.0f, 600.0f}}};
    EXPECT_LT(greatestDistance(sharpened(picture, quad), quad), 1e-3);
}

TEST(SideSharpenerTest, aPageThatFillsThePictureKeepsItsBorder) {
    const cv::Mat picture = pageOnDesk({{{0, 0}, {1280, 0}, {1280, 720}, {0, 720}}});
    const Quad border{{{0.0f, 0.0f}, {1280.0f, 0.0f}, {1280.0f, 720.0f}, {0.0f, 720.0f}}};
    EXPECT_LT(greatestDistance(sharpened(picture, border), border), 1e-3);
}

TEST(SideSharpenerTest, aSideOutsideThePictureStays) {
    const Quad truth{{{900.0f, 120.0f}, {1500.0f, 120.0f}, {1500.0f, 620.0f}, {900.0f, 620.0f}}};
    const Quad found = sharpened(pageOnDesk(truth), truth);
    EXPECT_NEAR(found[1].x, 1500.0f, 1.0f);
    EXPECT_NEAR(found[0].x, 900.0f, 2.0f);
}

}  // namespace
}  // namespace kestrelid::vision
