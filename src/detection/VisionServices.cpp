#include <kestrelid/VisionServices.h>

#include <algorithm>
#include <utility>

namespace kestrelid {

RectangleService::~RectangleService() = default;
TextService::~TextService() = default;
ZoneService::~ZoneService() = default;

TextObservation::TextObservation(NormalizedRect boundingBox, std::vector<RecognizedText> candidates)
    : boundingBox_(boundingBox), candidates_(std::move(candidates)) {}

std::vector<RecognizedText> TextObservation::topCandidates(int maximumCount) const {
    const auto count =
        std::min(candidates_.size(), static_cast<std::size_t>(std::max(maximumCount, 0)));
    return {candidates_.begin(), candidates_.begin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace kestrelid
