#include "vision/outlines/Quad.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kestrelid::vision {

namespace {

const Quad kPage{cv::Point2f{100, 50}, {400, 60}, {390, 260}, {90, 240}};

TEST(QuadTest, OrdersCornersAsSeenFromAnyStartAndDirection) {
    std::array<std::size_t, 4> order{0, 1, 2, 3};
    do {
        EXPECT_EQ(orderedQuad({kPage[order[0]], kPage[order[1]], kPage[order[2]], kPage[order[3]]}),
                  kPage);
    } while (std::ranges::next_permutation(order).found);
}

TEST(QuadTest, RefusesWhatIsNotConvex) {
    EXPECT_FALSE(orderedQuad({cv::Point2f{0, 0}, {100, 0}, {30, 30}, {0, 100}}));
    EXPECT_FALSE(orderedQuad({cv::Point2f{0, 0}, {100, 0}, {200, 0}, {50, 80}}));
}

TEST(QuadTest, MeasuresAreaAspectAndOverlap) {
    const Quad square{cv::Point2f{0, 0}, {100, 0}, {100, 100}, {0, 100}};
    const Quad half{cv::Point2f{0, 0}, {50, 0}, {50, 100}, {0, 100}};
    const Quad apart{cv::Point2f{300, 0}, {350, 0}, {350, 100}, {300, 100}};
    EXPECT_DOUBLE_EQ(area(square), 10000.0);
    EXPECT_NEAR(aspectRatio(half), 0.5, 1e-6);
    EXPECT_NEAR(overlap(square, half), 0.5, 1e-4);
    EXPECT_EQ(overlap(square, apart), 0.0);
}

TEST(QuadTest, EnclosingQuadRestoresCutCorners) {
    const std::vector<cv::Point2f> cut{{20, 0},    {280, 0},  {300, 20}, {300, 180},
                                       {280, 200}, {20, 200}, {0, 180},  {0, 20}};
    const auto quad = enclosingQuad(cut);
    ASSERT_TRUE(quad);
    EXPECT_NEAR(area(*quad), 60000.0, 1.0);
    EXPECT_NEAR((*quad)[0].x, 0.0, 0.01);
    EXPECT_NEAR((*quad)[2].y, 200.0, 0.01);
    EXPECT_FALSE(enclosingQuad({{0, 0}, {100, 0}, {50, 80}}));
}

}  // namespace

}  // namespace kestrelid::vision
