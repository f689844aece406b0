#pragma once

#include "vision/onnx/OnnxSession.h"
#include "vision/text/CtcAlphabet.h"
#include "vision/text/LineBox.h"

#include <utility>

namespace kestrelid::vision {

// Reads one line with the PP-OCRv4 recognition network. Thread: any, several lines at once.
class LineRecognizer {
public:
    LineRecognizer(OnnxSession session, CtcAlphabet alphabet)
        : session_(std::move(session)), alphabet_(std::move(alphabet)) {}

    [[nodiscard]] Expected<CtcReading> read(const cv::Mat& picture, const LineBox& line) const;

private:
    OnnxSession session_;
    CtcAlphabet alphabet_;
};

// A crop as the networks for lines take it: planes of blue, green, red from -1 to 1, filled up with
// 0 to width.
[[nodiscard]] std::vector<float> linePlanes(const cv::Mat& crop, int width);

}  // namespace kestrelid::vision
