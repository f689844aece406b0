#pragma once

#include "vision/text/LineBox.h"
#include "vision/text/LineRecognizer.h"

#include <utility>
#include <vector>

namespace kestrelid::vision {

// Tells whether a page stands upside down, from a few of its lines. Thread: any.
class PageDirection {
public:
    explicit PageDirection(OnnxSession classifier) : classifier_(std::move(classifier)) {}

    // Whether the page must be reversed to be read. Asks the direction network about the clearest
    // lines, as many at once as there are threads; where they do not agree, reads the clearest ones
    // both ways. The number of threads changes nothing in the answer.
    [[nodiscard]] Expected<bool> isReversed(const cv::Mat& picture, const PageLines& page,
                                            const LineRecognizer& recognizer, int threads) const;

private:
    // Probability that the line is upside down.
    [[nodiscard]] Expected<float> reversed(const cv::Mat& picture, const LineBox& line) const;

    void askNext(const cv::Mat& picture, const std::vector<LineBox>& lines, int threads,
                 std::vector<Expected<float>>& answers) const;

    OnnxSession classifier_;
};

}  // namespace kestrelid::vision
