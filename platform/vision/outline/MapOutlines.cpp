#include "platform/vision/outline/MapOutlines.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <optional>

namespace kestrelid::outline {
namespace {

using opencv::Quad;

constexpr int kFine = 4;                // the page's border is followed at a quarter of a cell
constexpr float kPage = 0.5f;           // of the page map
constexpr float kCore = 0.5f;           // of the core map
constexpr double kLeastRegion = 0.004;  // of the picture
constexpr double kSideShare = 0.08;     // of a side's length, left out at each of its ends
constexpr float kNearPeak = 2.5f;    // cells between a fitted corner and a peak of the corner map
constexpr float kLeastPeak = 0.25f;  // of the corner map

// For each label of labels, the mask's label under most of its pixels; 0: none.
std::vector<int> holders(const cv::Mat1i& labels, int count, const cv::Mat1i& mask, int maskCount) {
    std::vector<std::vector<int>> votes(static_cast<std::size_t>(count),
                                        std::vector<int>(static_cast<std::size_t>(maskCount), 0));
    for (int y = 0; y < labels.rows; ++y)
        for (int x = 0; x < labels.cols; ++x)
            ++votes[static_cast<std::size_t>(labels(y, x))][static_cast<std::size_t>(mask(y, x))];
    std::vector<int> holders(static_cast<std::size_t>(count), 0);
    for (std::size_t label = 1; label < votes.size(); ++label) {
        auto& ofLabel = votes[label];
        ofLabel[0] = 0;
        const auto most = std::ranges::max_element(ofLabel);
        holders[label] = *most > 0 ? static_cast<int>(most - ofLabel.begin()) : 0;
    }
    return holders;
}

// Splits a region among the cores in it: each pixel goes to the nearest.
std::vector<cv::Mat> partsOf(const cv::Mat& region, const cv::Mat1i& coreLabels,
                             const std::vector<int>& cores) {
    std::vector<cv::Mat> distances;
    for (const int core : cores) {
        cv::distanceTransform(coreLabels != core, distances.emplace_back(), cv::DIST_L2, 3);
    }
    std::vector<cv::Mat> parts;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        parts.push_back(region.clone());
        for (std::size_t j = 0; j < distances.size(); ++j)
            if (j != i)
                parts.back().setTo(0, distances[j] < distances[i]);
    }
    return parts;
}

// Masks, one a document: connected regions of the page map, split where they hold several cores.
std::vector<cv::Mat> regionsOf(const cv::Mat1f& page, const cv::Mat1f& core) {
    cv::Mat1i pageLabels;
    cv::Mat1i coreLabels;
    const int pages = cv::connectedComponents(page > kPage, pageLabels, 4, CV_32S);
    const int cores = cv::connectedComponents(core > kCore, coreLabels, 4, CV_32S);
    const std::vector<int> pageOfCore = holders(coreLabels, cores, pageLabels, pages);
    std::vector<cv::Mat> regions;
    for (int label = 1; label < pages; ++label) {
        std::vector<int> inside;
        for (int i = 1; i < cores; ++i)
            if (pageOfCore[static_cast<std::size_t>(i)] == label)
                inside.push_back(i);
        const cv::Mat region = pageLabels == label;
        for (const cv::Mat& part :
             inside.size() < 2 ? std::vector<cv::Mat>{region} : partsOf(region, coreLabels, inside))
            if (cv::countNonZero(part) >= kLeastRegion * static_cast<double>(part.total()))
                regions.push_back(part);
    }
    return regions;
}

// A line through the contour's points along the side from a to b; none where they are few.
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
    const auto rough = opencv::enclosingQuad({hull.begin(), hull.end()});
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
        const auto corner = opencv::intersection(ends[2 * before], ends[2 * before + 1],
                                                 ends[2 * i], ends[2 * i + 1]);
        corners[i] = corner.value_or((*rough)[i]) + cv::Point2f(0.5f, 0.5f);
    }
    return opencv::orderedQuad(corners);
}

// The strongest cell near a place, to a fraction of a cell; its height.
float snapToPeak(const cv::Mat1f& map, cv::Point2f& cell) {
    float best = 0.0f;
    cv::Point place;
    for (int y = std::max(0, cvFloor(cell.y - kNearPeak));
         y < std::min(map.rows, cvCeil(cell.y + kNearPeak)); ++y)
        for (int x = std::max(0, cvFloor(cell.x - kNearPeak));
             x < std::min(map.cols, cvCeil(cell.x + kNearPeak)); ++x)
            if (map(y, x) > best) {
                best = map(y, x);
                place = {x, y};
            }
    if (best < kLeastPeak)
        return best;
    cv::Point2f sum;
    float weight = 0.0f;
    for (int y = std::max(0, place.y - 1); y <= std::min(map.rows - 1, place.y + 1); ++y)
        for (int x = std::max(0, place.x - 1); x <= std::min(map.cols - 1, place.x + 1); ++x) {
            sum +=
                cv::Point2f(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f) * map(y, x);
            weight += map(y, x);
        }
    cell = sum / weight;
    return best;
}

}  // namespace

std::vector<MapOutline> outlinesOf(const OutlineMaps& maps) {
    const cv::Size fine(maps.page.cols * kFine, maps.page.rows * kFine);
    cv::Mat1f page;
    cv::Mat1f core;
    cv::resize(maps.page, page, fine, 0, 0, cv::INTER_LINEAR);
    cv::resize(maps.core, core, fine, 0, 0, cv::INTER_LINEAR);
    std::vector<MapOutline> outlines;
    for (const cv::Mat& region : regionsOf(page, core)) {
        const auto quad = fittedQuad(region);
        if (!quad)
            continue;
        MapOutline outline{*quad};
        std::array<cv::Point, 4> whole;
        std::ranges::transform(*quad, whole.begin(), [](cv::Point2f p) { return cv::Point(p); });
        cv::Mat drawn(fine, CV_8U, cv::Scalar(0));
        cv::fillConvexPoly(drawn, whole.data(), 4, 255);
        const int shared = cv::countNonZero(drawn & region);
        const int either = cv::countNonZero(drawn | region);
        outline.fill = either > 0 ? static_cast<double>(shared) / either : 0.0;
        outline.inside = shared > 0 ? cv::mean(page, drawn)[0] : 0.0;
        double peaks = 0.0;
        for (cv::Point2f& corner : outline.quad) {
            cv::Point2f cell = corner / kFine;
            const bool seen = cell.x > 0 && cell.y > 0 &&
                              cell.x < static_cast<float>(maps.corner.cols) &&
                              cell.y < static_cast<float>(maps.corner.rows);
            peaks += seen ? static_cast<double>(snapToPeak(maps.corner, cell)) : 0.5;
            corner = {corner.x / static_cast<float>(fine.width),
                      corner.y / static_cast<float>(fine.height)};
        }
        outline.corners = peaks / 4;
        outlines.push_back(outline);
    }
    return outlines;
}

}  // namespace kestrelid::outline
