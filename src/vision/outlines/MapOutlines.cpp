#include "vision/outlines/MapOutlines.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <optional>

namespace kestrelid::vision {
namespace {

constexpr int kFine = 4;  // borders are followed at a quarter of a cell
// Of the page and the core map: regions that touch at one level are apart at another.
constexpr std::array kLevels{0.3f, 0.5f, 0.7f};
constexpr float kPage = 0.5f;           // of the page map
constexpr float kCore = 0.5f;           // of the core map
constexpr float kCoreSize = 0.7f;       // of a document's size, as the network was taught
constexpr float kAround = 1.25f;        // of an outline's size: the area searched for its region
constexpr double kLeastRegion = 0.004;  // of the picture
constexpr double kLeastCore = 0.001;
constexpr double kSideShare = 0.08;  // of a side's length, left out at each of its ends
constexpr float kNearPeak = 2.5f;    // cells between a fitted corner and a peak of the corner map

// Masks of the connected regions of a mask, each at least so large a share of it.
std::vector<cv::Mat> componentsOf(const cv::Mat& mask, double leastShare) {
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat1d centres;
    const int count = cv::connectedComponentsWithStats(mask, labels, stats, centres, 4, CV_32S);
    std::vector<cv::Mat> components;
    for (int label = 1; label < count; ++label)
        if (stats(label, cv::CC_STAT_AREA) >= leastShare * static_cast<double>(mask.total()))
            components.push_back(labels == label);
    return components;
}

// Splits a region among the cores in it: each pixel goes to the nearest.
std::vector<cv::Mat> partsOf(const cv::Mat& region, const std::vector<cv::Mat>& cores) {
    std::vector<cv::Mat> distances;
    for (const cv::Mat& core : cores)
        cv::distanceTransform(~core, distances.emplace_back(), cv::DIST_L2, 3);
    std::vector<cv::Mat> parts;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        parts.push_back(region.clone());
        for (std::size_t j = 0; j < distances.size(); ++j)
            if (j != i)
                parts.back().setTo(0, distances[j] < distances[i]);
    }
    return parts;
}

// Regions of the page map above a level, split if they hold several cores.
std::vector<cv::Mat> regionsOf(const cv::Mat1f& page, const std::vector<cv::Mat>& cores,
                               float level) {
    std::vector<cv::Mat> regions;
    for (const cv::Mat& region : componentsOf(page > level, kLeastRegion)) {
        std::vector<cv::Mat> inside;
        std::ranges::copy_if(cores, std::back_inserter(inside), [&](const cv::Mat& core) {
            return 2 * cv::countNonZero(core & region) > cv::countNonZero(core);
        });
        if (inside.size() < 2)
            regions.push_back(region);
        else
            std::ranges::copy(partsOf(region, inside), std::back_inserter(regions));
    }
    return regions;
}

// A line through the contour's points along the side from a to b. Nothing if they are few.
std::optional<cv::Vec4f> fittedSide(const std::vector<cv::Point2f>& contour, cv::Point2f a,
                                    cv::Point2f b, float reach) {
    const cv::Point2f along = b - a;
    const float length = std::hypot(along.x, along.y);
    const cv::Point2f unit = along / std::max(length, 1e-3f);
    std::vector<cv::Point2f> near;
    for (const cv::Point2f& point : contour) {
        const cv::Point2f from = point - a;
        const float t = from.dot(unit) / std::max(length, 1e-3f);
        if (t > kSideShare && t < 1 - kSideShare && std::abs(from.cross(unit)) < reach)
            near.push_back(point);
    }
    if (near.size() < 6)
        return std::nullopt;
    cv::Vec4f line;
    cv::fitLine(near, line, cv::DIST_HUBER, 0, 0.01, 0.01);
    return line;
}

std::optional<Quad> fittedQuad(const cv::Mat& region) {
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(region, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    if (contours.empty())
        return std::nullopt;
    const auto& contour = *std::ranges::max_element(
        contours, {}, [](const auto& points) { return cv::contourArea(points); });
    std::vector<cv::Point> hull;
    cv::convexHull(contour, hull);
    const auto rough = enclosingQuad({hull.begin(), hull.end()});
    if (!rough)
        return std::nullopt;
    const std::vector<cv::Point2f> points(contour.begin(), contour.end());
    const float reach = 0.04f * static_cast<float>(region.cols);
    std::array<cv::Point2f, 8> ends;  // of the four sides, half a pixel outward of pixel centres
    for (std::size_t i = 0; i < 4; ++i) {
        cv::Point2f a = (*rough)[i];
        cv::Point2f b = (*rough)[(i + 1) % 4];
        const cv::Point2f along = b - a;
        const float length = std::max(std::hypot(along.x, along.y), 1e-3f);
        if (const auto line = fittedSide(points, a, b, reach)) {
            const cv::Point2f on((*line)[2], (*line)[3]);
            const cv::Point2f unit((*line)[0], (*line)[1]);
            a = on + unit * (a - on).dot(unit);
            b = on + unit * (b - on).dot(unit);
        }
        const cv::Point2f outward = cv::Point2f(along.y, -along.x) / length * 0.5f;
        ends[2 * i] = a + outward;
        ends[2 * i + 1] = b + outward;
    }
    std::array<cv::Point2f, 4> corners;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t before = (i + 3) % 4;
        const auto corner =
            intersection(ends[2 * before], ends[2 * before + 1], ends[2 * i], ends[2 * i + 1]);
        corners[i] = corner.value_or((*rough)[i]) + cv::Point2f(0.5f, 0.5f);
    }
    return orderedQuad(corners);
}

// The height of the strongest cell near a place.
float peakNear(const cv::Mat1f& map, cv::Point2f cell) {
    float best = 0.0f;
    for (int y = std::max(0, cvFloor(cell.y - kNearPeak));
         y < std::min(map.rows, cvCeil(cell.y + kNearPeak)); ++y)
        for (int x = std::max(0, cvFloor(cell.x - kNearPeak));
             x < std::min(map.cols, cvCeil(cell.x + kNearPeak)); ++x)
            best = std::max(best, map(y, x));
    return best;
}

Quad resized(const Quad& quad, float factor) {
    const cv::Point2f centre = (quad[0] + quad[1] + quad[2] + quad[3]) * 0.25f;
    Quad other;
    std::ranges::transform(quad, other.begin(),
                           [&](cv::Point2f corner) { return centre + (corner - centre) * factor; });
    return other;
}

cv::Mat1b filled(const Quad& quad, cv::Size size) {
    std::array<cv::Point, 4> corners;
    std::ranges::transform(quad, corners.begin(), [](cv::Point2f p) { return cv::Point(p); });
    cv::Mat1b mask(size, std::uint8_t{0});
    cv::fillConvexPoly(mask, corners.data(), 4, 255);
    return mask;
}

// quad is in pixels of page, a map enlarged; corner is as the network gave it.
MapOutline measured(const Quad& quad, const cv::Mat& region, const cv::Mat1f& page,
                    const cv::Mat1f& corner) {
    MapOutline outline{quad};
    const cv::Mat drawn = filled(quad, page.size());
    const int shared = cv::countNonZero(drawn & region);
    const int either = cv::countNonZero(drawn | region);
    outline.fill = either > 0 ? static_cast<double>(shared) / either : 0.0;
    outline.inside = shared > 0 ? cv::mean(page, drawn)[0] : 0.0;
    double peaks = 0.0;
    for (cv::Point2f& place : outline.quad) {
        const cv::Point2f cell = place / kFine;
        const bool seen = cell.x > 0 && cell.y > 0 && cell.x < static_cast<float>(corner.cols) &&
                          cell.y < static_cast<float>(corner.rows);
        peaks += seen ? static_cast<double>(peakNear(corner, cell)) : 0.5;
        place = {place.x / static_cast<float>(page.cols), place.y / static_cast<float>(page.rows)};
    }
    outline.corners = peaks / 4;
    return outline;
}

}  // namespace

std::vector<MapOutline> outlinesOf(const OutlineMaps& maps) {
    const cv::Size fine(maps.page.cols * kFine, maps.page.rows * kFine);
    cv::Mat1f page;
    cv::Mat1f core;
    cv::resize(maps.page, page, fine, 0, 0, cv::INTER_LINEAR);
    cv::resize(maps.core, core, fine, 0, 0, cv::INTER_LINEAR);
    const std::vector<cv::Mat> cores = componentsOf(core > kCore, kLeastCore);
    const cv::Mat pages = page > kPage;
    std::vector<MapOutline> outlines;
    for (const float level : kLevels) {
        for (const cv::Mat& region : regionsOf(page, cores, level))
            if (const auto quad = fittedQuad(region))
                outlines.push_back(measured(*quad, region, page, maps.corner));
        for (const cv::Mat& middle : componentsOf(core > level, kLeastCore))
            if (const auto quad = fittedQuad(middle)) {
                const Quad whole = resized(*quad, 1.0f / kCoreSize);
                const cv::Mat region = pages & filled(resized(whole, kAround), fine);
                outlines.push_back(measured(whole, region, page, maps.corner));
            }
    }
    return outlines;
}

}  // namespace kestrelid::vision
