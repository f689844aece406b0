#pragma once

#include "vision/onnx/OnnxSession.h"

#include <opencv2/core.hpp>

#include <vector>

namespace kestrelid::vision {

// Finds lines of text with the network of models/text-detector.md. Thread: any.
class TextDetector {
public:
    explicit TextDetector(OnnxSession session) : session_(std::move(session)) {}

    // picture: blue, green, red. longestSide: what the network sees of it, in pixels, a multiple
    // of 32. Boxes are in pixels of the picture.
    [[nodiscard]] Expected<std::vector<cv::RotatedRect>> find(const cv::Mat& picture,
                                                              int longestSide) const;

private:
    OnnxSession session_;
};

}  // namespace kestrelid::vision
