#pragma once

#include "platform/vision/opencv/OutlineFinder.h"

namespace kestrelid::opencv {

// The whole picture as one page: a scan, or a page held so close that its outline lies outside.
// Since there is no outline to see, print that reaches over the picture must show that it is a
// page.
class FullPageFinder final : public OutlineFinder {
public:
    [[nodiscard]] std::vector<OutlineCandidate> find(const Scene& scene) const override;
};

}  // namespace kestrelid::opencv
