#pragma once

#include "vision/text/LineBox.h"
#include "vision/text/LineRecognizer.h"

#include <utility>

namespace kestrelid::vision {

// Tells whether a page stands upside down, from a few of its lines. Thread: any.
class PageDirection {
public:
    explicit PageDirection(OnnxSession classifier) : classifier_(std::move(classifier)) {}

    // Whether the page must be reversed to be read. Asks the direction network about the clearest
    // lines; where they do not agree, reads the clearest ones both ways.
    [[nodiscard]] Expected<bool> isReversed(const cv::Mat& picture, const PageLines& page,
                                            const LineRecognizer& recognizer) const;

private:
    // Probability that the line is upside down.
    [[nodiscard]] Expected<float> reversed(const cv::Mat& picture, const LineBox& line) const;

    OnnxSession classifier_;
};

}  // namespace kestrelid::vision
