#pragma once

#include "capture/gstreamer/GStreamerHandles.h"

#include <kestrelid/Bitmap.h>
#include <kestrelid/CaptureServices.h>

#include <cstddef>
#include <gst/video/video.h>
#include <memory>
#include <optional>

namespace kestrelid::capture {

// Where pixels of BGRA8 are to stand, row after row without gaps.
struct PixelTarget {
    std::byte* pixels;
    PhotoDimensions size;

    [[nodiscard]] std::size_t bytes() const {
        return std::size_t{4} * static_cast<std::size_t>(size.width) *
               static_cast<std::size_t>(size.height);
    }
};

// Turns raw pixels into BGRA8, scaled, and remembers how for the next ones of that format. False
// where the pixels are fewer than their format says, or memory is short. Thread: one at a time.
class PixelConverter {
public:
    [[nodiscard]] bool convert(const GstVideoInfo& format, GstBuffer* pixels,
                               const PixelTarget& target);
    [[nodiscard]] bool convert(const Bitmap& bitmap, const PixelTarget& target);

private:
    struct FreeConverter {
        void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
    };

    GstVideoInfo from_{};
    GstVideoInfo to_{};
    std::unique_ptr<GstVideoConverter, FreeConverter> converter_;
};

// A copy in BGRA8, scaled to size. Nothing if there is not enough memory, or if the format is
// unknown.
[[nodiscard]] std::optional<Bitmap> convertToBgra(const Bitmap& bitmap,
                                                  const PhotoDimensions& size);

// sample: of raw video.
[[nodiscard]] std::optional<Bitmap> convertToBgra(GstSample* sample, const PhotoDimensions& bound);

}  // namespace kestrelid::capture
