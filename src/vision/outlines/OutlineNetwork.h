#pragma once

#include "vision/onnx/OnnxSession.h"

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// What the network says of each cell of a picture that was stretched to a square: 0..1.
struct OutlineMaps {
    cv::Mat1f page;    // inside a document, what covers it included
    cv::Mat1f core;    // in a document's middle; middles of neighbours do not touch
    cv::Mat1f corner;  // near a document's corner
};

// The outline network of models/outline-net.md. Thread: any.
class OutlineNetwork {
public:
    using Maps = Expected<OutlineMaps>;

    explicit OutlineNetwork(OnnxSession session) : session_(std::move(session)) {}

    // A picture (8 bits; blue, green, red) stretched to the square that the network takes.
    [[nodiscard]] static cv::Mat squareOf(const cv::Mat& picture);

    [[nodiscard]] Maps look(const cv::Mat& square) const;

    // The mean of looks at the square in the eight ways that a square can lie, the first of which
    // is done: seven times the work, and pages that are hard to see come out clearer.
    [[nodiscard]] Maps lookAllWays(const cv::Mat& square, const OutlineMaps& first,
                                   int threads) const;

private:
    OnnxSession session_;
};

}  // namespace kestrelid::vision
