#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/Guidance.h>
#include <kestrelid/VisionServices.h>

#include <optional>

namespace kestrelid::camera {

// The largest document in the bitmap, and how it looks. Nothing if the service reports an error, or
// if the bitmap is too small. Throws what the service throws, and std::bad_alloc.
[[nodiscard]] std::optional<PageLook> lookAtPage(const Bitmap& bitmap, RectangleService& outlines);

// How the bitmap, eight pixels high and wide at least, looks inside the outline, or the whole of it
// without one. Takes about a millisecond, whatever its size. Throws std::bad_alloc.
[[nodiscard]] PageLook measuredPage(const Bitmap& bitmap,
                                    const std::optional<RectangleObservation>& outline);

}  // namespace kestrelid::camera
