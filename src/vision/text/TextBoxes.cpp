#include "vision/text/TextBoxes.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>

namespace kestrelid::vision {
namespace {

constexpr double kPixelThreshold = 0.3;
constexpr double kBoxThreshold = 0.5;  // mean probability inside a core
constexpr float kUnclipRatio = 1.6f;   // growth: area * ratio / perimeter on each side
constexpr float kSmallestCore = 3.0f;  // shorter side, pixels of the map
constexpr std::size_t kMostBoxes =
    400;  // a page of text has 30 to 100 lines; textures have any number of specks

double meanInside(const cv::Mat& probability, const cv::RotatedRect& core) {
    const cv::Rect bounds = core.boundingRect() & cv::Rect({0, 0}, probability.size());
    if (bounds.empty())
        return 0.0;
    std::array<cv::Point2f, 4> corners;
    core.points(corners.data());
    std::array<cv::Point, 4> polygon;
    std::transform(corners.begin(), corners.end(), polygon.begin(), [&](const cv::Point2f& corner) {
        return cv::Point(cvRound(corner.x) - bounds.x, cvRound(corner.y) - bounds.y);
    });
    cv::Mat mask = cv::Mat::zeros(bounds.size(), CV_8UC1);
    cv::fillConvexPoly(mask, polygon.data(), static_cast<int>(polygon.size()), cv::Scalar(255));
    return cv::mean(probability(bounds), mask)[0];
}

}  // namespace

std::vector<cv::RotatedRect> textBoxes(const cv::Mat& probability) {
    const cv::Mat marked = probability > kPixelThreshold;
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(marked, contours, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);

    std::vector<cv::RotatedRect> boxes;
    for (const auto& contour : contours) {
        cv::RotatedRect box = cv::minAreaRect(contour);
        if (std::min(box.size.width, box.size.height) < kSmallestCore ||
            meanInside(probability, box) < kBoxThreshold)
            continue;
        const float growth = kUnclipRatio * box.size.area() / (box.size.width + box.size.height);
        box.size.width += growth;
        box.size.height += growth;
        boxes.push_back(box);
    }
    if (boxes.size() > kMostBoxes) {
        std::stable_sort(boxes.begin(), boxes.end(), [](const auto& a, const auto& b) {
            return a.size.area() > b.size.area();
        });
        boxes.resize(kMostBoxes);
    }
    return boxes;
}

}  // namespace kestrelid::vision
