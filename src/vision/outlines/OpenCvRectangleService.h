#pragma once

#include <kestrelid/VisionServices.h>

namespace kestrelid::vision {

// Finds outlines of pages with OpenCV, on the calling thread apart from what OpenCV itself spreads
// over its pool.
//
// Confidence is the estimated chance that the outline is that of a page. On drawn scenes that
// played no part in the fitting, three quarters of the largest outlines between 0.4 and 0.7
// overlapped the page by 0.8 or more, nine in ten between 0.7 and 0.9, and all above 0.9. Below the
// default floor of 0.4 most outlines are desks, keys and frames. Whole pictures that look like one
// page get 0.8 at most and blocks of print without an outline 0.6, since the end of the page is not
// seen there.
class OpenCvRectangleService final : public RectangleService {
public:
    [[nodiscard]] RectangleResult perform(const Bitmap& bitmap,
                                          const RectangleRequest& request) override;
};

}  // namespace kestrelid::vision
