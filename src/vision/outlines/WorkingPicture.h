#pragma once

#include <kestrelid/Bitmap.h>
#include <opencv2/core.hpp>

namespace kestrelid::vision {

// The bitmap made small by area averaging, and brightened if it is dim. Every finder looks at this.
struct WorkingPicture {
    cv::Mat luma;    // 8 bits
    cv::Mat colour;  // 8-bit Lab; empty for a grey bitmap

    [[nodiscard]] cv::Size size() const { return luma.size(); }
};

// Longest side at most longestSide pixels; nothing is enlarged.
[[nodiscard]] WorkingPicture makeWorkingPicture(const Bitmap& bitmap, int longestSide);

}  // namespace kestrelid::vision
