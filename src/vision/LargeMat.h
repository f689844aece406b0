#pragma once

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// An empty matrix that will take its memory from base::allocateLarge, as all do that may hold a
// whole picture.
[[nodiscard]] cv::Mat largeMat();

}  // namespace kestrelid::vision
