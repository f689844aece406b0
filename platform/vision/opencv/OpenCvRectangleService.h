#pragma once

#include <kestrelid/VisionServices.h>

namespace kestrelid {

// Finds outlines of pages with OpenCV, on the calling thread apart from what OpenCV itself spreads
// over its pool.
//
// Confidence is the part of outlines with that much evidence that proved right (overlap of 0.85 or
// more) on drawn scenes: at the default floor of 0.4 a little less than half, at 0.9 nearly all.
// Whole pictures that look like one page get 0.8 at most and blocks of print without an outline
// 0.6, since where the page ends is not seen there.
class OpenCvRectangleService final : public RectangleService {
public:
    [[nodiscard]] std::optional<RequestError> perform(const Bitmap& bitmap,
                                                      const RectangleRequest& request,
                                                      const RequestCompletion& completion) override;
};

}  // namespace kestrelid
