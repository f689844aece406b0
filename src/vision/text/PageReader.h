#pragma once

#include "vision/text/LineCollector.h"
#include "vision/text/TextModels.h"

#include <optional>

namespace kestrelid::vision {

struct PageReaderSettings {
    int detectorSide = 736;  // longest side of what the detector sees, in pixels, a multiple of 32
    int threads = 2;         // that read lines, the calling one included
    bool mayStopEarly = false;  // telling lines first, instead of the order that ends soonest
};

// Reads all lines of a picture into collector, until that has enough. Thread: any.
[[nodiscard]] std::optional<RequestError> readPage(const TextModels& models, const cv::Mat& picture,
                                                   const PageReaderSettings& settings,
                                                   LineCollector& collector);

}  // namespace kestrelid::vision
