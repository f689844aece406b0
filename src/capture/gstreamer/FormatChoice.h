#pragma once

#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CaptureServices.h>

#include <optional>
#include <vector>

namespace kestrelid::capture {

// What frames for showing and detecting are wanted in.
inline constexpr PhotoDimensions kLiveDimensions{.width = 1280, .height = 720};

// The format for frames: about kLiveDimensions, smooth rather than of just that size. None where
// there is no format.
[[nodiscard]] std::optional<VideoFormat> chooseLive(const std::vector<VideoFormat>& formats);

// The format for stills: the largest within bound, or the smallest where none fits. bound: 0x0 for
// none. live: preferred among equals, because it needs no switch.
[[nodiscard]] std::optional<VideoFormat> chooseStill(const std::vector<VideoFormat>& formats,
                                                     const PhotoDimensions& bound,
                                                     const std::optional<VideoFormat>& live);

// The largest size within bound that has the shape of size; size itself where it fits. Even sides.
[[nodiscard]] PhotoDimensions scaledInto(const PhotoDimensions& size, const PhotoDimensions& bound);

// About kLiveDimensions in area, with the shape of size; size itself where it is no larger.
[[nodiscard]] PhotoDimensions liveDimensions(const PhotoDimensions& size);

}  // namespace kestrelid::capture
