#include "vision/outlines/OpenCvRectangleService.h"

#include "tests/vision/outlines/DrawnScenes.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <thread>
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

struct Scene {
    cv::Mat3b picture;
    Quad corners;
};

const Quad kTilted{cv::Point2f{214, 82}, {742, 128}, {704, 482}, {168, 430}};

Scene pageOnDesk() {
    return {test::laidOn(test::grain({960, 540}, 5), test::drawnPage(), kTilted), kTilted};
}

Scene turned(const Scene& scene, int quarterTurns, bool mirrored) {
    Scene result{scene.picture.clone(), scene.corners};
    for (int i = 0; i < quarterTurns; ++i) {
        const auto height = static_cast<float>(result.picture.rows);
        for (cv::Point2f& corner : result.corners) {
            corner = {height - corner.y, corner.x};
        }
        cv::rotate(result.picture, result.picture, cv::ROTATE_90_CLOCKWISE);
    }
    if (mirrored) {
        const auto width = static_cast<float>(result.picture.cols);
        for (cv::Point2f& corner : result.corners) {
            corner.x = width - corner.x;
        }
        cv::flip(result.picture, result.picture, 1);
    }
    return result;
}

struct View {
    const char* name;
    PixelFormat format = PixelFormat::bgra8;
    int quarterTurns = 0;
    bool mirrored = false;
    double brightness = 1.0;
};

TEST(OpenCvRectangleServiceTest, PageOnDeskIsTheLargestRectangle) {
    const View views[] = {{.name = "bgra"},
                          {.name = "rgb", .format = PixelFormat::rgb8},
                          {.name = "grey", .format = PixelFormat::gray8},
                          {.name = "quarterTurn", .quarterTurns = 1},
                          {.name = "upsideDown", .quarterTurns = 2},
                          {.name = "threeQuarters", .quarterTurns = 3},
                          {.name = "mirrored", .mirrored = true},
                          {.name = "dim", .brightness = 0.25},
                          {.name = "dimGrey", .format = PixelFormat::gray8, .brightness = 0.25}};
    for (const View& view : views) {
        SCOPED_TRACE(view.name);
        Scene scene = turned(pageOnDesk(), view.quarterTurns, view.mirrored);
        scene.picture.convertTo(scene.picture, -1, view.brightness);
        const cv::Size size = scene.picture.size();

        const auto rectangles = rectanglesOf(bitmapOf(scene.picture, view.format));
        EXPECT_GT(overlap(largestBox(rectangles), boxOf(scene.corners, size)), 0.92);
        ASSERT_FALSE(rectangles.empty());

        // Named by where they are seen, whichever way the page lies: nearest to the picture's
        // corners.
        const auto& corners = rectangles.front().corners;
        const auto ordered = orderedQuad(scene.corners).value();
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_NEAR(corners[i].x, double{ordered[i].x} / size.width, 0.02) << i;
            EXPECT_NEAR(corners[i].y, 1.0 - double{ordered[i].y} / size.height, 0.02) << i;
        }
    }
}

const cv::Size kFrame{960, 540};

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
    } rows[] = {
        {"keyboard", test::keys(kFrame, 60, true), page, kTilted, 0.9},
        {"cutOffByTheBorder", test::plainWall(kFrame, {70, 60, 60}), page, cutOff, 0.85},
        {"frameInsideThePage", test::plainWall(kFrame, {95, 80, 75}), framed, kTilted, 0.9}};
    for (const auto& row : rows) {
        const auto scene = test::laidOn(row.desk, row.page, row.corners);
        const NormalizedRect box = largestBox(rectanglesOf(bitmapOf(scene, PixelFormat::bgra8)));
        EXPECT_GT(overlap(box, boxOf(row.corners, kFrame)), row.leastOverlap) << row.name;
    }
}

TEST(OpenCvRectangleServiceTest, PageThatFillsThePictureIsFoundWhole) {
    for (const int quarterTurns : {0, 1, 2, 3}) {
        const Scene scene = turned({test::drawnPage(), {}}, quarterTurns, false);
        const auto rectangles = rectanglesOf(bitmapOf(scene.picture, PixelFormat::rgb8));
        EXPECT_GT(largestBox(rectangles).area(), 0.85) << quarterTurns << " quarter turns";
    }
}

TEST(OpenCvRectangleServiceTest, ScenesWithoutPageHaveNoLargeRectangle) {
    const std::pair<const char*, cv::Mat3b> scenes[] = {
        {"whiteWall", test::plainWall(kFrame, {240, 240, 240})},
        {"blackness", test::plainWall(kFrame, {0, 0, 0})},
        {"gradient", test::gradient(kFrame)},
        {"faintNoise", test::noise(kFrame, 4.0, 1)},
        {"strongNoise", test::noise(kFrame, 45.0, 2)},
        {"woodGrain", test::grain(kFrame, 3)},
        {"darkKeys", test::keys(kFrame, 64, true)},
        {"lightKeys", test::keys(kFrame, 64, false)},
        {"smallKeys", test::keys(kFrame, 26, true)}};
    for (const auto& [name, scene] : scenes) {
        const Bitmap bitmap = bitmapOf(scene, PixelFormat::bgra8);
        EXPECT_LT(largestBox(rectanglesOf(bitmap)).area(), 0.15) << name;
    }
}

TEST(OpenCvRectangleServiceTest, HonoursTheLimitsOfTheRequest) {
    const Bitmap bitmap = bitmapOf(pageOnDesk().picture, PixelFormat::bgra8);
    const auto found = rectanglesOf(bitmap);
    ASSERT_FALSE(found.empty());
    const float confidence = found.front().confidence;
    EXPECT_GE(confidence, RectangleRequest{}.minimumConfidence);

    EXPECT_TRUE(rectanglesOf(bitmap, {.maximumObservations = 0}).empty());
    EXPECT_TRUE(rectanglesOf(bitmap, {.maximumObservations = -1}).empty());
    const auto isPage = testing::Each(testing::Field(&RectangleObservation::boundingBox,
                                                     testing::Not(found.front().boundingBox)));
    // The page is 1.5 times as wide as high.
    EXPECT_THAT(rectanglesOf(bitmap, {.maximumAspectRatio = 1.2f}), isPage);
    EXPECT_THAT(rectanglesOf(bitmap, {.minimumAspectRatio = 1.8f}), isPage);
    EXPECT_TRUE(rectanglesOf(bitmap, {.minimumConfidence = 1.1f}).empty());
    EXPECT_EQ(rectanglesOf(bitmap, {.minimumConfidence = confidence - 0.01f}).front().boundingBox,
              found.front().boundingBox);
    EXPECT_LE(rectanglesOf(bitmap, {.maximumObservations = 2, .minimumConfidence = 0.0f}).size(),
              2u);
    for (const auto& rectangle : rectanglesOf(bitmap, {.minimumConfidence = 0.0f})) {
        EXPECT_LE(rectangle.confidence, 1.0f);
        EXPECT_GE(rectangle.confidence, 0.0f);
    }
}

TEST(OpenCvRectangleServiceTest, ObservationsStayInsideThePicture) {
    for (const std::uint64_t seed : {1, 2, 3}) {
        const auto scene = test::laidOn(test::grain(kFrame, seed), test::drawnPage(),
                                        {cv::Point2f{-90, -40}, {700, 20}, {720, 570}, {-60, 520}});
        for (const auto& rectangle :
             rectanglesOf(bitmapOf(scene, PixelFormat::bgra8), {.minimumConfidence = 0.0f})) {
            const NormalizedRect& box = rectangle.boundingBox;
            EXPECT_GE(std::min(box.x, box.y), 0.0);
            EXPECT_LE(std::max(box.x + box.width, box.y + box.height), 1.0 + 1e-9);
            double left = 1.0;
            double top = 0.0;
            for (const NormalizedPoint& corner : rectangle.corners) {
                left = std::min(left, corner.x);
                top = std::max(top, corner.y);
            }
            EXPECT_DOUBLE_EQ(left, box.x);
            EXPECT_NEAR(top, box.y + box.height, 1e-9);
        }
    }
}

TEST(OpenCvRectangleServiceTest, TinyAndThinBitmapsHaveNoRectangles) {
    for (const cv::Size size :
         {cv::Size{1, 1}, {1, 5000}, {5000, 1}, {2, 2}, {23, 23}, {4000, 40}}) {
        for (const PixelFormat format :
             {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8}) {
            EXPECT_TRUE(rectanglesOf(bitmapOf(test::noise(size, 60.0, 9), format)).empty()) << size;
        }
    }
}

TEST(OpenCvRectangleServiceTest, OverlappingCallsFindTheSame) {
    const Bitmap bitmap = bitmapOf(pageOnDesk().picture, PixelFormat::bgra8);
    const auto alone = rectanglesOf(bitmap);
    OpenCvRectangleService service;
    std::vector<std::vector<RectangleObservation>> found(4);
    {
        std::vector<std::jthread> threads;
        for (auto& rectangles : found) {
            threads.emplace_back([&] {
                rectangles =
                    std::get<std::vector<RectangleObservation>>(service.perform(bitmap, {}));
            });
        }
    }
    for (const auto& rectangles : found) {
        ASSERT_EQ(rectangles.size(), alone.size());
        for (std::size_t i = 0; i < alone.size(); ++i) {
            EXPECT_EQ(rectangles[i].corners, alone[i].corners);
            EXPECT_EQ(rectangles[i].boundingBox, alone[i].boundingBox);
            EXPECT_EQ(rectangles[i].confidence, alone[i].confidence);
        }
    }
}

}  // namespace

}  // namespace kestrelid::vision
