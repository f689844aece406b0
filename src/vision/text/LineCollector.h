#pragma once

#include "vision/text/ReadingOrder.h"

#include <kestrelid/VisionServices.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid::vision {

struct CollectedLine {
    LineExtent extent;  // on the upright page
    NormalizedRect bounds;
    std::string text;
    float confidence = 0.0f;  // 0..1
};

// Gathers lines from several threads and asks the caller after each one whether it has enough.
class LineCollector {
public:
    explicit LineCollector(const std::function<bool(std::string_view)>& isEnough)
        : isEnough_(isEnough) {}

    // Any thread. A line without text is no line.
    void add(CollectedLine line);

    // Any thread: the rest need not be read.
    [[nodiscard]] bool isComplete() const noexcept {
        return complete_.load(std::memory_order_relaxed);
    }

    // One thread, after the last add(): all lines in reading order.
    [[nodiscard]] std::vector<TextObservation> observations() const;

private:
    const std::function<bool(std::string_view)>& isEnough_;
    std::mutex mutex_;
    std::vector<CollectedLine> lines_;
    std::atomic<bool> complete_ = false;
};

}  // namespace kestrelid::vision
