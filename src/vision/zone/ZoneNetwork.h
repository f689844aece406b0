#pragma once

#include "vision/onnx/OnnxSession.h"
#include "vision/zone/LineScores.h"

#include <opencv2/core.hpp>

#include <span>
#include <vector>

namespace kestrelid::vision {

// The zone network of models/zone-net.md. Thread: any.
class ZoneNetwork {
public:
    static constexpr int kHeight = 32;      // pixels of a crop
    static constexpr double kPitch = 14.0;  // pixels from one character to the next
    static constexpr double kTall = 1.9;    // pitches that the height shows
    static constexpr int kStep = 4;         // pixels for each of its frames

    explicit ZoneNetwork(OnnxSession session) : session_(std::move(session)) {}

    // crops: kHeight high, all of one width, a multiple of kStep.
    [[nodiscard]] Expected<std::vector<LineScores>> read(std::span<const cv::Mat1b> crops) const;

private:
    OnnxSession session_;
};

}  // namespace kestrelid::vision
