#include "vision/zone/ZoneView.h"

#include "vision/SideBySide.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace kestrelid::vision {
namespace {

constexpr double kLongestSide = 720.0;  // pixels of a view: 44 characters are well over 5 each
constexpr double kMargin = 0.02;        // of a document: outlines are a little off

cv::Size viewSize(double width, double height) {
    const double scale = kLongestSide / std::max(width, height);
    return {std::max(1, cvRound(width * scale)), std::max(1, cvRound(height * scale))};
}

using Corners = std::array<cv::Point2f, 4>;

// In pixels of the picture.
Corners cornersOf(const RectangleObservation& outline, cv::Size picture) {
    Corners corners;
    std::ranges::transform(outline.corners, corners.begin(), [&](const NormalizedPoint& corner) {
        return cv::Point2f(static_cast<float>(corner.x * picture.width - 0.5),
                           static_cast<float>((1.0 - corner.y) * picture.height - 0.5));
    });
    return corners;
}

// Corners: top left, top right, bottom right, bottom left as the view has them.
ZoneView flattened(const Corners& corners) {
    const auto side = [&](std::size_t a, std::size_t b) {
        return cv::norm(corners[a] - corners[b]);
    };
    const cv::Size size =
        viewSize((side(0, 1) + side(3, 2)) / 2.0, (side(0, 3) + side(1, 2)) / 2.0);
    const auto right = static_cast<float>(size.width * (1.0 - kMargin));
    const auto bottom = static_cast<float>(size.height * (1.0 - kMargin));
    const auto left = static_cast<float>(size.width * kMargin);
    const auto top = static_cast<float>(size.height * kMargin);
    const std::array<cv::Point2f, 4> inView{
        {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
    return {cv::Matx33d(cv::getPerspectiveTransform(inView, corners)), size};
}

// As it lies and by a quarter turn. None where the corners hold no area.
std::vector<ZoneView> bothWays(const Corners& corners) {
    constexpr double kLeastArea = 400.0;                      // pixels
    if (!(std::abs(cv::contourArea(corners)) >= kLeastArea))  // also where a host's are no numbers
        return {};
    return {flattened(corners), flattened({corners[3], corners[0], corners[1], corners[2]})};
}

// Turned by degrees about its middle, shown whole.
ZoneView turnedView(cv::Size picture, double degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    const double cosine = std::cos(radians);
    const double sine = std::sin(radians);
    const double width = std::abs(cosine) * picture.width + std::abs(sine) * picture.height;
    const double height = std::abs(sine) * picture.width + std::abs(cosine) * picture.height;
    const cv::Size size = viewSize(width, height);
    const double step = std::max(width / size.width, height / size.height);
    const cv::Matx33d fromMiddle(1, 0, -(size.width - 1) / 2.0, 0, 1, -(size.height - 1) / 2.0, 0,
                                 0, 1);
    const cv::Matx33d turned(step * cosine, -step * sine, (picture.width - 1) / 2.0, step * sine,
                             step * cosine, (picture.height - 1) / 2.0, 0, 0, 1);
    return {turned * fromMiddle, size};
}

// How strongly rows of print and the space between them follow one another in that view.
double rowContrast(const PictureLevels& picture, double degrees) {
    constexpr double kSide = 160.0;  // pixels
    ZoneView view = turnedView(picture.size(), degrees);
    const double scale = kSide / kLongestSide;
    view.size = {std::max(1, cvRound(view.size.width * scale)),
                 std::max(1, cvRound(view.size.height * scale))};
    view.toPicture = view.toPicture * cv::Matx33d(1.0 / scale, 0, 0, 0, 1.0 / scale, 0, 0, 0, 1);
    const cv::Mat1b small = picture.sample(view.toPicture, view.size);
    cv::Mat change;
    cv::absdiff(small.colRange(2, small.cols), small.colRange(0, small.cols - 2), change);
    cv::Mat rows;
    cv::reduce(change, rows, 1, cv::REDUCE_AVG, CV_32F);
    cv::Mat step;
    cv::subtract(rows.rowRange(1, rows.rows), rows.rowRange(0, rows.rows - 1), step);
    return cv::norm(step, cv::NORM_L2SQR) / std::max(cv::norm(rows, cv::NORM_L2SQR), 1e-6);
}

}  // namespace

std::vector<ZoneView> viewsOfOutline(const RectangleObservation& outline, cv::Size picture) {
    const Corners corners = cornersOf(outline, picture);
    return cv::isContourConvex(corners) ? bothWays(corners) : std::vector<ZoneView>();
}

std::vector<ZoneView> viewsAroundOutline(const RectangleObservation& outline, cv::Size picture) {
    constexpr float kGrown = 1.1f;
    cv::RotatedRect around = cv::minAreaRect(cornersOf(outline, picture));
    around.size *= kGrown;
    Corners corners;
    around.points(corners.data());
    return bothWays(corners);
}

std::vector<ZoneView> viewsOfPicture(const PictureLevels& picture, int threads) {
    struct Turn {
        double contrast = -1.0;
        double degrees = 0.0;
    };
    constexpr double kStep = 5.0;         // candidates may be tilted by 11 in a view
    constexpr std::size_t kQuarter = 18;  // steps
    std::array<Turn, 2 * kQuarter> turns;
    sideBySide(turns.size(), threads, [&](std::size_t index) {
        const double degrees = static_cast<double>(index) * kStep - 45.0;
        turns[index] = {rowContrast(picture, degrees), degrees};
    });
    const auto middle = turns.begin() + kQuarter;
    Turn first = *std::ranges::max_element(turns.begin(), middle, {}, &Turn::contrast);
    Turn second = *std::ranges::max_element(middle, turns.end(), {}, &Turn::contrast);
    if (second.contrast > first.contrast)
        std::swap(first, second);
    return {turnedView(picture.size(), first.degrees), turnedView(picture.size(), second.degrees)};
}

}  // namespace kestrelid::vision
