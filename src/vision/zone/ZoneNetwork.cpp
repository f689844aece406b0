#include "vision/zone/ZoneNetwork.h"

#include "vision/zone/ZoneAlphabet.h"

#include <array>
#include <utility>

namespace kestrelid::vision {
namespace {

// A crop by its own mean and deviation, so that light and ink do not count.
void normalize(const cv::Mat1b& crop, float* values) {
    constexpr double kLeastDeviation = 8.0;  // grey levels; a plain crop stays plain
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(crop, mean, deviation);
    const double scale = 1.0 / (deviation[0] + kLeastDeviation);
    cv::Mat target(crop.size(), CV_32F, values);
    crop.convertTo(target, CV_32F, scale, -mean[0] * scale);
}

}  // namespace

Expected<std::vector<LineScores>> ZoneNetwork::read(std::span<const cv::Mat1b> crops) const {
    std::vector<LineScores> lines;
    if (crops.empty())
        return lines;
    const std::size_t pixels = crops.front().total();
    std::vector<float> values(pixels * crops.size());
    for (std::size_t index = 0; index < crops.size(); ++index)
        normalize(crops[index], values.data() + index * pixels);
    const std::array<std::int64_t, 4> shape{static_cast<std::int64_t>(crops.size()), 1, kHeight,
                                            crops.front().cols};
    const OnnxInput input{values, shape};
    const auto outputs = session_.run({&input, 1});
    if (!outputs)
        return Failure(outputs.error());
    const OnnxTensor& scores = outputs->front();
    if (scores.shape().size() != 3 || scores.shape()[1] != kZoneClasses ||
        scores.shape()[0] != shape[0])
        return failure("the zone network gave scores of another shape than expected");
    const std::size_t frames = static_cast<std::size_t>(scores.shape()[2]);
    for (std::size_t index = 0; index < crops.size(); ++index)
        lines.emplace_back(
            scores.values().subspan(index * frames * kZoneClasses, frames * kZoneClasses));
    return lines;
}

}  // namespace kestrelid::vision
