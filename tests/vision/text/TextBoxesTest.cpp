#include "vision/text/TextBoxes.h"

#include <gmock/gmock.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {
namespace {

// A map on which the network has marked the core of a line.
void mark(cv::Mat& map, const cv::RotatedRect& core, float probability) {
    std::array<cv::Point2f, 4> corners;
    core.points(corners.data());
    const std::vector<cv::Point> polygon(corners.begin(), corners.end());
    cv::fillConvexPoly(map, polygon, cv::Scalar(probability));
}

TEST(TextBoxes, GrowsClearCoresToLines) {
    const struct {
        const char* name;
        cv::Size2f core = {200, 12};
        float degrees = 0;
        float probability = 0.9f;
        bool isFound = true;
    } rows[] = {{"climbing", {200, 12}, -20},
                {"upAndDown", {200, 12}, 90},
                {"faint", {200, 12}, 0, 0.4f, false},
                {"speck", {2, 2}, 0, 0.9f, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        cv::Mat map = cv::Mat::zeros(320, 320, CV_32FC1);
        mark(map, cv::RotatedRect({160, 150}, row.core, row.degrees), row.probability);
        const auto boxes = textBoxes(map);
        ASSERT_EQ(boxes.size(), row.isFound ? 1u : 0u);
        if (!row.isFound)
            continue;
        const auto [shorter, longer] = std::minmax(boxes[0].size.width, boxes[0].size.height);
        const float growth =
            1.6f * row.core.area() / (row.core.width + row.core.height);  // 0.8 of it on each side
        EXPECT_NEAR(longer, row.core.width + growth, 3.5f);
        EXPECT_NEAR(shorter, row.core.height + growth, 3.5f);
        EXPECT_NEAR(boxes[0].center.x, 160, 1.5);
        EXPECT_NEAR(boxes[0].center.y, 150, 1.5);
        const float direction =
            boxes[0].size.width > boxes[0].size.height ? boxes[0].angle : boxes[0].angle + 90.0f;
        EXPECT_NEAR(std::remainder(direction - row.degrees, 180.0f), 0.0f, 1.5f);
    }
}

TEST(TextBoxes, KeepsLinesApartAndTextInsideAFrame) {
    cv::Mat map = cv::Mat::zeros(200, 300, CV_32FC1);
    cv::rectangle(map, {10, 10, 280, 180}, cv::Scalar(0.9), 4);
    mark(map, cv::RotatedRect({150, 60}, {180, 12}, 0), 0.9f);
    mark(map, cv::RotatedRect({150, 120}, {120, 12}, 0), 0.9f);
    const auto boxes = textBoxes(map);
    std::vector<float> centers;
    for (const auto& box : boxes)
        centers.push_back(box.center.y);
    EXPECT_THAT(centers, testing::UnorderedElementsAre(testing::FloatNear(60, 1.5f),
                                                       testing::FloatNear(120, 1.5f)));
}

TEST(TextBoxes, BoundsWhatATextureMayCost) {
    cv::Mat map = cv::Mat::zeros(640, 640, CV_32FC1);
    for (int y = 4; y < 636; y += 12)
        for (int x = 4; x < 636; x += 12)
            map(cv::Rect(x, y, 6, 6)) = 0.9f;
    EXPECT_LE(textBoxes(map).size(), 400u);
}

}  // namespace
}  // namespace kestrelid::vision
