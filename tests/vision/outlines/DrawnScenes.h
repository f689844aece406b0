#pragma once

#include "vision/outlines/Quad.h"

#include <array>
#include <cstdint>
#include <kestrelid/Bitmap.h>
#include <opencv2/core.hpp>

namespace kestrelid::test {

// A passport page of 710 x 500 pixels with a header, a portrait in a frame, fields and two lines at
// the foot. BGR.
[[nodiscard]] cv::Mat3b drawnPage();

// A wooden desk; the same seed draws the same one.
[[nodiscard]] cv::Mat3b grain(cv::Size size, std::uint64_t seed);

// Lays page on desk with its corners at those places, top left first and clockwise.
[[nodiscard]] cv::Mat3b laidOn(const cv::Mat3b& desk, const cv::Mat3b& page,
                               const vision::Quad& corners);

[[nodiscard]] Bitmap bitmapOf(const cv::Mat3b& bgr, PixelFormat format);

}  // namespace kestrelid::test
