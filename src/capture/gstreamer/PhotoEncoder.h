#pragma once

#include "capture/gstreamer/Still.h"

#include <kestrelid/CaptureServices.h>
#include <kestrelid/ImageFile.h>

#include <tl/expected.hpp>

namespace kestrelid::capture {

using FinishedPhoto = tl::expected<CapturedPhoto, ImageError>;

// The photo that settings ask for: a camera's own JPEG as it is if it fits, and other pixels as a
// file only if the settings do not accept an image. Takes up to a few tenths of a second.
[[nodiscard]] FinishedPhoto finishPhoto(Still still, const PhotoSettings& settings) noexcept;

}  // namespace kestrelid::capture
