#include "vision/text/LineCollector.h"

#include <utility>

namespace kestrelid::vision {

void LineCollector::add(CollectedLine line) {
    if (line.text.empty())
        return;
    const std::scoped_lock lock(mutex_);
    lines_.push_back(std::move(line));
    if (isEnough_ && !isComplete() && isEnough_(lines_.back().text))
        complete_.store(true, std::memory_order_relaxed);
}

std::vector<TextObservation> LineCollector::observations() const {
    std::vector<LineExtent> extents;
    extents.reserve(lines_.size());
    for (const auto& line : lines_)
        extents.push_back(line.extent);
    std::vector<TextObservation> results;
    results.reserve(lines_.size());
    for (const std::size_t index : readingOrder(extents)) {
        const CollectedLine& line = lines_[index];
        results.push_back({line.bounds, {{line.text, line.confidence}}});
    }
    return results;
}

}  // namespace kestrelid::vision
