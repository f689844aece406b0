#include "vision/text/TextDetector.h"

#include "vision/ReducedPicture.h"
#include "vision/text/TextBoxes.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>

namespace kestrelid::vision {
namespace {

constexpr int kSideMultiple = 32;            // the network halves its input five times
constexpr double kStrongestEnlarging = 2.0;  // enlarging further adds time but no detail

// Per channel in the order red, green, blue, of values scaled to 0..1: the statistics the network
// was trained with.
constexpr std::array kMean{0.485, 0.456, 0.406};
constexpr std::array kDeviation{0.229, 0.224, 0.225};

cv::Size inputSize(cv::Size picture, int longestSide) {
    const double scale = std::min(kStrongestEnlarging, static_cast<double>(longestSide) /
                                                           std::max(picture.width, picture.height));
    const auto side = [&](int pixels) {
        return std::max(1, cvRound(pixels * scale / kSideMultiple)) * kSideMultiple;
    };
    return {side(picture.width), side(picture.height)};
}

cv::Mat1f normalized(const cv::Mat& input) {
    std::array<double, 3> scales{};
    std::array<double, 3> shifts{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        scales[channel] = 1.0 / (255.0 * kDeviation[channel]);
        shifts[channel] = -kMean[channel] / kDeviation[channel];
    }
    return planesOf(input, scales, shifts);
}

}  // namespace

Expected<std::vector<cv::RotatedRect>> TextDetector::find(const cv::Mat& picture,
                                                          int longestSide) const {
    const cv::Size size = inputSize(picture.size(), longestSide);
    const cv::Mat input = resized(picture, size);
    const cv::Mat1f values = normalized(input);
    const std::array<std::int64_t, 4> shape{1, 3, size.height, size.width};
    const OnnxInput tensor{{values[0], values.total()}, shape};
    const auto outputs = session_.run({&tensor, 1});
    if (!outputs)
        return Failure(outputs.error());
    const OnnxTensor& map = outputs->front();
    if (map.values().size() != input.total())
        return failure("the text detector gave a map of another size than its input");

    const cv::Mat probability(size, CV_32FC1, const_cast<float*>(map.values().data()));
    std::vector<cv::RotatedRect> boxes = textBoxes(probability);
    const float scaleX = static_cast<float>(picture.cols) / static_cast<float>(size.width);
    const float scaleY = static_cast<float>(picture.rows) / static_cast<float>(size.height);
    for (auto& box : boxes) {
        // Sides are rounded apart from each other, so a box becomes a slightly skewed one: take the
        // tightest around it.
        std::array<cv::Point2f, 4> corners;
        box.points(corners.data());
        for (auto& corner : corners)
            corner = {corner.x * scaleX, corner.y * scaleY};
        box = cv::minAreaRect(corners);
    }
    return boxes;
}

}  // namespace kestrelid::vision
