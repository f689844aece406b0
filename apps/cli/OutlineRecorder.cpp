#include "apps/cli/OutlineRecorder.h"

#include <algorithm>
#include <utility>

namespace kestrelid::cli {

OutlineRecorder::OutlineRecorder(std::shared_ptr<RectangleService> service)
    : service_(std::move(service)) {}

RectangleResult OutlineRecorder::perform(const Bitmap& bitmap, const RectangleRequest& request) {
    outlines_.clear();
    RectangleResult result = service_->perform(bitmap, request);
    if (const auto* found = std::get_if<std::vector<RectangleObservation>>(&result))
        outlines_ = *found;
    return result;
}

std::vector<RectangleObservation> OutlineRecorder::take() {
    return std::exchange(outlines_, {});
}

std::optional<RectangleObservation> chosenOutline(std::span<const RectangleObservation> outlines) {
    const auto largest =
        std::max_element(outlines.begin(), outlines.end(), [](const auto& a, const auto& b) {
            return a.boundingBox.area() < b.boundingBox.area();
        });
    if (largest == outlines.end())
        return std::nullopt;
    return *largest;
}

}  // namespace kestrelid::cli
