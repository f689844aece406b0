#pragma once

#include "vision/onnx/OnnxSession.h"
#include "vision/text/CtcReading.h"
#include "vision/text/LineBox.h"

#include <stop_token>
#include <utility>

namespace kestrelid::vision {

// Reads one line with the network of models/text-recogniser.md. Thread: any, several lines at once.
class LineRecognizer {
public:
    explicit LineRecognizer(OnnxSession session) : session_(std::move(session)) {}

    // Fails soon after stop is requested.
    [[nodiscard]] Expected<CtcReading> read(const cv::Mat& picture, const LineBox& line,
                                            const std::stop_token& stop = {}) const;

private:
    OnnxSession session_;
};

// A crop as the networks for lines take it: planes of blue, green, red from -1 to 1, filled up with
// 0 to width.
[[nodiscard]] std::vector<float> linePlanes(const cv::Mat& crop, int width);

}  // namespace kestrelid::vision
