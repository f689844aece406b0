#pragma once

#include <kestrelid/VisionServices.h>

namespace kestrelid {

// Finds outlines of pages with OpenCV.
class OpenCvRectangleService final : public RectangleService {
public:
    [[nodiscard]] std::optional<RequestError> perform(const Bitmap& bitmap,
                                                      const RectangleRequest& request,
                                                      const RequestCompletion& completion) override;
};

}  // namespace kestrelid
