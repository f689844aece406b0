#include "apps/cli/OutlineRecorder.h"

#include <algorithm>
#include <utility>

namespace kestrelid::cli {

OutlineRecorder::OutlineRecorder(std::shared_ptr<RectangleService> service)
    : service_(std::move(service)) {}

std::optional<RequestError> OutlineRecorder::perform(const Bitmap& bitmap,
                                                     const RectangleRequest& request,
                                                     const RequestCompletion& completion) {
    outlines_.clear();
    return service_->perform(bitmap, request, [&](const RequestReport& report) {
        if (report.results) {
            for (const Observation& observation : *report.results) {
                if (const auto* outline = std::get_if<RectangleObservation>(&observation))
                    outlines_.push_back(*outline);
            }
        }
        completion(report);  // may end the picture: nothing is recorded after it
    });
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
