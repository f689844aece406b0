#include "vision/text/LineBox.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kestrelid::vision {
namespace {

constexpr float kElongated =
    1.7f;  // sides this far apart tell a direction; single letters reach 1.5
constexpr float kCrosswise =
    2.5f;  // how much taller than long a box must be to count as a line up or down the page
constexpr float kSmoothShrink = 1.5f;  // above this, sampling between neighbours skips pixels

cv::Point2f unitVector(float radians) {
    return {std::cos(radians), std::sin(radians)};
}

// Direction of the longer side, 0 to pi; y grows downwards.
float longSideAngle(const cv::RotatedRect& box) {
    const float degrees = box.size.width >= box.size.height ? box.angle : box.angle + 90.0f;
    const float radians = degrees * std::numbers::pi_v<float> / 180.0f;
    return radians - std::floor(radians / std::numbers::pi_v<float>) * std::numbers::pi_v<float>;
}

// Mean direction of the elongated boxes that lie within tolerance of reference (all of them at pi /
// 2), by length. Doubled angles, as a direction and its opposite are the same.
float meanAngle(std::span<const cv::RotatedRect> boxes, float reference, float tolerance) {
    cv::Point2f sum;
    for (const auto& box : boxes) {
        const auto [shorter, longer] = std::minmax(box.size.width, box.size.height);
        const float angle = longSideAngle(box);
        const float offset = std::abs(std::remainder(angle - reference, std::numbers::pi_v<float>));
        if (longer >= kElongated * shorter && offset <= tolerance)
            sum += unitVector(2.0f * angle) * longer;
    }
    return sum == cv::Point2f() ? reference : std::atan2(sum.y, sum.x) / 2.0f;
}

}  // namespace

std::array<cv::Point2f, 4> LineBox::corners() const {
    const cv::Point2f halfLength = along * (length / 2.0f);
    const cv::Point2f halfHeight = down() * (height / 2.0f);
    return {center - halfLength - halfHeight, center + halfLength - halfHeight,
            center + halfLength + halfHeight, center - halfLength + halfHeight};
}

LineExtent LineBox::extentOn(cv::Point2f pageAlong) const {
    const cv::Point2f pageDown(-pageAlong.y, pageAlong.x);
    const float cosine = std::abs(along.dot(pageAlong));
    const float sine = std::abs(along.dot(pageDown));
    return {center.dot(pageAlong), center.dot(pageDown), length * cosine + height * sine,
            length * sine + height * cosine};
}

void PageLines::reverse() {
    along = -along;
    for (auto& line : lines)
        line = line.reversed();
}

PageLines alignToPage(std::span<const cv::RotatedRect> boxes) {
    constexpr float kQuarterTurn = std::numbers::pi_v<float> / 2.0f;
    constexpr float kNear = std::numbers::pi_v<float> / 8.0f;
    const float coarse = meanAngle(boxes, 0.0f, kQuarterTurn + 0.01f);
    // Once more without the boxes that run across, which pull the mean towards themselves.
    const float page = meanAngle(boxes, coarse, kNear);

    PageLines result;
    result.along = unitVector(page);
    for (const auto& box : boxes) {
        const float side = box.angle * std::numbers::pi_v<float> / 180.0f;
        // Of the four directions along the box's sides, the one nearest to the page's.
        const float turns = std::round((page - side) / kQuarterTurn);
        const bool swapped = std::abs(std::remainder(turns, 2.0f)) > 0.5f;
        LineBox line{box.center, unitVector(side + turns * kQuarterTurn), box.size.width,
                     box.size.height, false};
        if (swapped)
            std::swap(line.length, line.height);
        if (line.height > kCrosswise * line.length) {
            line = {line.center, line.down(), line.height, line.length, true};
        }
        result.lines.push_back(line);
    }
    return result;
}

cv::Mat cropLine(const cv::Mat& picture, const LineBox& line, int height, int longest) {
    const int length =
        std::clamp(cvRound(line.length / line.height * static_cast<float>(height)), 1, longest);
    const bool shrinks = line.height > kSmoothShrink * static_cast<float>(height);
    const cv::Size sampled = shrinks
                                 ? cv::Size(std::max(1, cvRound(line.length)), cvRound(line.height))
                                 : cv::Size(length, height);
    const cv::Point2f stepAlong = line.along * (line.length / static_cast<float>(sampled.width));
    const cv::Point2f stepDown = line.down() * (line.height / static_cast<float>(sampled.height));
    const cv::Point2f origin =
        line.corners()[0] + (stepAlong + stepDown) / 2.0f - cv::Point2f(0.5f, 0.5f);
    const cv::Matx23f toPicture(stepAlong.x, stepDown.x, origin.x, stepAlong.y, stepDown.y,
                                origin.y);
    cv::Mat crop;
    cv::warpAffine(picture, crop, toPicture, sampled, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP,
                   cv::BORDER_REPLICATE);
    if (shrinks)
        cv::resize(crop, crop, cv::Size(length, height), 0, 0, cv::INTER_AREA);
    return crop;
}

}  // namespace kestrelid::vision
