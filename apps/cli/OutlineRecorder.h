#pragma once

#include <kestrelid/VisionServices.h>

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace kestrelid::cli {

// Passes requests on to a rectangle service and keeps what the last one found, which the detector
// does not tell. For one picture at a time.
class OutlineRecorder : public RectangleService {
public:
    explicit OutlineRecorder(std::shared_ptr<RectangleService> service);

    RectangleResult perform(const Bitmap& bitmap, const RectangleRequest& request) override;

    // What was found since the last call, in the service's order.
    // Thread: any that knows the request to be over.
    [[nodiscard]] std::vector<RectangleObservation> take();

private:
    const std::shared_ptr<RectangleService> service_;
    std::vector<RectangleObservation> outlines_;
};

// The outline that the detector reads the text from: the one with the largest bounding box, of
// equals the first.
[[nodiscard]] std::optional<RectangleObservation>
chosenOutline(std::span<const RectangleObservation> outlines);

}  // namespace kestrelid::cli
