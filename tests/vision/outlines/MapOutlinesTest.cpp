#include "vision/outlines/MapOutlines.h"

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace kestrelid::vision {
namespace {

constexpr int kCells = 48;

// Fills a quadrilateral, in shares of the map, with 1; cells at its border get their part of it.
void draw(cv::Mat1f& map, const Quad& quad) {
    constexpr int kFiner = 16;
    cv::Mat1b fine(kCells * kFiner, kCells * kFiner, std::uint8_t{0});
    std::vector<cv::Point> corners;
    for (const cv::Point2f& corner : quad)
        corners.emplace_back(corner * static_cast<float>(kCells * kFiner));
    cv::fillConvexPoly(fine, corners, 255);
    cv::Mat1b small;
    cv::resize(fine, small, map.size(), 0, 0, cv::INTER_AREA);
    cv::Mat1f share;
    small.convertTo(share, CV_32F, 1.0 / 255);
    map = cv::max(map, share);
}

Quad shrunk(const Quad& quad) {
    const cv::Point2f centre = (quad[0] + quad[1] + quad[2] + quad[3]) * 0.25f;
    Quad inner;
    std::ranges::transform(quad, inner.begin(),
                           [&](cv::Point2f corner) { return centre + (corner - centre) * 0.7f; });
    return inner;
}

OutlineMaps mapsOf(const std::vector<Quad>& documents) {
    OutlineMaps maps{cv::Mat1f(kCells, kCells, 0.02f), cv::Mat1f(kCells, kCells, 0.02f),
                     cv::Mat1f(kCells, kCells, 0.02f)};
    for (const Quad& quad : documents) {
        draw(maps.page, quad);
        draw(maps.core, shrunk(quad));
        for (const cv::Point2f& corner : quad) {
            const cv::Point cell(cvFloor(corner.x * kCells), cvFloor(corner.y * kCells));
            if (cv::Rect(0, 0, kCells, kCells).contains(cell))
                maps.corner(cell) = 0.9f;
        }
    }
    return maps;
}

// Whichever corner comes first: of a diamond that is open.
double greatestDistance(const Quad& a, const Quad& b) {
    double least = 10.0;
    for (std::size_t first = 0; first < 4; ++first) {
        double greatest = 0.0;
        for (std::size_t i = 0; i < 4; ++i)
            greatest = std::max(greatest, cv::norm(a[(first + i) % 4] - b[i]));
        least = std::min(least, greatest);
    }
    return least;
}

bool isAmong(const std::vector<MapOutline>& found, const Quad& quad, double tolerance) {
    return std::ranges::any_of(found, [&](const MapOutline& outline) {
        return greatestDistance(outline.quad, quad) < tolerance;
    });
}

TEST(MapOutlinesTest, drawnMapsGiveBackTheQuadrilaterals) {
    const std::pair<const char*, std::vector<Quad>> rows[] = {
        {"diamond", {Quad{{{0.5f, 0.1f}, {0.92f, 0.55f}, {0.5f, 0.92f}, {0.1f, 0.5f}}}}},
        {"seenFromAside", {Quad{{{0.2f, 0.2f}, {0.7f, 0.3f}, {0.9f, 0.8f}, {0.1f, 0.9f}}}}},
        {"fillsThePicture", {Quad{{{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}}}}},
        {"twoApart",
         {Quad{{{0.1f, 0.1f}, {0.4f, 0.1f}, {0.4f, 0.6f}, {0.1f, 0.6f}}},
          Quad{{{0.6f, 0.3f}, {0.9f, 0.3f}, {0.9f, 0.9f}, {0.6f, 0.9f}}}}},
        {"twoThatTouch",
         {Quad{{{0.1f, 0.2f}, {0.5f, 0.2f}, {0.5f, 0.8f}, {0.1f, 0.8f}}},
          Quad{{{0.5f, 0.2f}, {0.9f, 0.2f}, {0.9f, 0.8f}, {0.5f, 0.8f}}}}}};
    for (const auto& [name, documents] : rows) {
        SCOPED_TRACE(name);
        const auto found = outlinesOf(mapsOf(documents));
        for (const MapOutline& outline : found)
            EXPECT_TRUE(std::ranges::any_of(documents, [&](const Quad& document) {
                return greatestDistance(outline.quad, document) < 0.025;
            }));
        for (const Quad& document : documents)
            EXPECT_TRUE(std::ranges::any_of(found, [&](const MapOutline& outline) {
                return greatestDistance(outline.quad, document) < 0.012 && outline.inside > 0.9 &&
                       outline.fill > 0.9 && outline.corners > 0.4;
            }));
    }
}

TEST(MapOutlinesTest, aCornerBeyondThePictureIsFoundWhereTheSidesMeet) {
    const Quad cut{{{0.4f, 0.3f}, {1.2f, 0.3f}, {1.2f, 0.8f}, {0.4f, 0.8f}}};
    const auto found = outlinesOf(mapsOf({cut}));
    ASSERT_FALSE(found.empty());
    EXPECT_TRUE(std::ranges::any_of(found, [](const MapOutline& outline) {
        const cv::Rect2f box = boundingBox(outline.quad);
        return std::abs(box.x - 0.4f) < 0.01f && std::abs(box.y - 0.3f) < 0.01f &&
               box.br().x > 0.99f;
    }));
}

TEST(MapOutlinesTest, aPageWhosePaleHalfTheMapDoubtsIsAlsoFoundByItsCore) {
    const Quad page{{{0.2f, 0.2f}, {0.8f, 0.2f}, {0.8f, 0.8f}, {0.2f, 0.8f}}};
    OutlineMaps maps = mapsOf({page});
    maps.page(cv::Rect(25, 0, 23, kCells)) *= 0.2f;
    EXPECT_TRUE(isAmong(outlinesOf(maps), page, 0.025));
}

TEST(MapOutlinesTest, aBridgeThatTheMapHalfBelievesDoesNotJoinTwoPages) {
    const Quad left{{{0.1f, 0.2f}, {0.4f, 0.2f}, {0.4f, 0.8f}, {0.1f, 0.8f}}};
    const Quad right{{{0.6f, 0.2f}, {0.9f, 0.2f}, {0.9f, 0.8f}, {0.6f, 0.8f}}};
    OutlineMaps maps = mapsOf({left, right});
    maps.core.setTo(0.02f);
    maps.page(cv::Rect(19, 15, 10, 10)).setTo(0.6f);
    for (const Quad& page : {left, right})
        EXPECT_TRUE(isAmong(outlinesOf(maps), page, 0.02));
}

TEST(MapOutlinesTest, specksAndFaintRegionsGiveNothing) {
    OutlineMaps maps = mapsOf({});
    maps.page(10, 10) = 1.0f;
    maps.page(cv::Rect(15, 15, 25, 25)).setTo(0.25f);
    EXPECT_TRUE(outlinesOf(maps).empty());
}

}  // namespace
}  // namespace kestrelid::vision
