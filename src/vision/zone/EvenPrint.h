#pragma once

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// Whether a crop for the zone network may show characters of one pitch, the right way up or not:
// strokes that come again from character to character, strong, and in the middle rows. Most other
// print is told apart, at the loss of one line of a zone in three hundred.
[[nodiscard]] bool isEvenPrint(const cv::Mat1b& crop);

}  // namespace kestrelid::vision
