#pragma once

#include <kestrelid/Bitmap.h>

#include <opencv2/core.hpp>

namespace kestrelid::vision {

// The bitmap in blue, green, red, halved until its longer side is at most 1400 pixels: enough to
// place sides within a thousandth of it.
[[nodiscard]] cv::Mat outlinePicture(const Bitmap& bitmap);

}  // namespace kestrelid::vision
