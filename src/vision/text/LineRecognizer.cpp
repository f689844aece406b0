#include "vision/text/LineRecognizer.h"

#include "vision/onnx/ResourceFolders.h"

#include <algorithm>
#include <array>
#include <string>

namespace kestrelid::vision {
namespace {

constexpr int kLineHeight = 48;     // what the network was trained with
constexpr int kLongestLine = 2400;  // 50 times its height; longer lines are squeezed
constexpr int kShortestLine = 64;   // the network misreads what is narrower
constexpr int kStep = 8;            // pixels for each step of the network

}  // namespace

std::vector<float> linePlanes(const cv::Mat& crop, int width) {
    const std::size_t plane = static_cast<std::size_t>(crop.rows) * static_cast<std::size_t>(width);
    std::vector<float> values(plane * 3, 0.0f);
    for (int y = 0; y < crop.rows; ++y) {
        const auto* row = crop.ptr<cv::Vec3b>(y);
        float* target = values.data() + static_cast<std::ptrdiff_t>(y) * width;
        for (int x = 0; x < crop.cols; ++x)
            for (int channel = 0; channel < 3; ++channel)
                target[static_cast<std::size_t>(channel) * plane + static_cast<std::size_t>(x)] =
                    static_cast<float>(row[x][channel]) / 127.5f - 1.0f;
    }
    return values;
}

Expected<CtcReading> LineRecognizer::read(const cv::Mat& picture, const LineBox& line,
                                          const std::stop_token& stop) const {
    const cv::Mat crop = cropLine(picture, line, kLineHeight, kLongestLine);
    const int width = std::max(kShortestLine, (crop.cols + kStep - 1) / kStep * kStep);
    const std::vector<float> values = linePlanes(crop, width);
    const std::array<std::int64_t, 4> shape{1, 3, kLineHeight, width};
    const OnnxInput input{values, shape};
    const auto outputs = session_.run({&input, 1}, stop);
    if (!outputs)
        return Failure(outputs.error());
    const OnnxTensor& classes = outputs->front();
    if (classes.shape().empty() || classes.shape().back() != std::int64_t{kTextClasses})
        return failure("the text recogniser tells other characters apart than this library: " +
                       std::string(kModelRemedy));
    return bestPath(classes.values());
}

}  // namespace kestrelid::vision
