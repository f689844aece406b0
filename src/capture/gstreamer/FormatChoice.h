#pragma once

#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CaptureServices.h>

#include <optional>
#include <vector>

namespace kestrelid::capture {

// The wanted size of frames for showing and detecting.
inline constexpr PhotoDimensions kLiveDimensions{.width = 1280, .height = 720};

// The format for frames: about kLiveDimensions; a smooth one is better than one of exactly that
// size, and one of the shape of large stills than one of another shape, so that a photo shows what
// was seen. Empty if formats is empty.
[[nodiscard]] std::optional<VideoFormat> chooseLive(const std::vector<VideoFormat>& formats);

// The format for stills: the largest within bound whose first frame comes within a second, or else
// the quickest; the smallest if none fits. One of the shape of live comes first if it is large
// enough for small print. bound: 0x0 for none. live: what flows, which needs no switch.
[[nodiscard]] std::optional<VideoFormat> chooseStill(const std::vector<VideoFormat>& formats,
                                                     const PhotoDimensions& bound,
                                                     const std::optional<VideoFormat>& live);

// Whether they have the same ratio of width to height.
[[nodiscard]] bool haveOneShape(const VideoFormat& a, const VideoFormat& b);

// The largest size within bound that has the shape of size; size itself if it fits. Even sides.
[[nodiscard]] PhotoDimensions scaledInto(const PhotoDimensions& size, const PhotoDimensions& bound);

// About kLiveDimensions in area, with the shape of size; size itself if it is no larger.
[[nodiscard]] PhotoDimensions liveDimensions(const PhotoDimensions& size);

}  // namespace kestrelid::capture
