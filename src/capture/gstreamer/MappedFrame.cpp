#include "capture/gstreamer/MappedFrame.h"

#include <gst/video/video.h>

#include <utility>

namespace kestrelid::capture {

namespace {

struct Mapping {
    explicit Mapping(SampleHandle source) : sample(std::move(source)) {
        GstCaps* caps = gst_sample_get_caps(sample.get());
        GstBuffer* buffer = gst_sample_get_buffer(sample.get());
        GstVideoInfo info;
        mapped = caps && buffer && gst_video_info_from_caps(&info, caps) &&
                 (GST_VIDEO_INFO_FORMAT(&info) == GST_VIDEO_FORMAT_BGRA ||
                  GST_VIDEO_INFO_FORMAT(&info) == GST_VIDEO_FORMAT_BGRx) &&
                 gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() {
        if (mapped)
            gst_video_frame_unmap(&frame);
    }

    SampleHandle sample;
    GstVideoFrame frame{};
    bool mapped = false;
};

}  // namespace

std::optional<Bitmap> mapFrame(SampleHandle sample) {
    const auto mapping = std::make_shared<const Mapping>(std::move(sample));
    if (!mapping->mapped)
        return std::nullopt;
    const GstVideoFrame* frame = &mapping->frame;
    const auto* first = static_cast<const std::byte*>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
    const std::ptrdiff_t stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
    const int width = GST_VIDEO_FRAME_WIDTH(frame);
    const int height = GST_VIDEO_FRAME_HEIGHT(frame);
    if (stride <= 0 || width <= 0 || height <= 0)
        return std::nullopt;
    // The last row may end with its last pixel.
    const std::size_t size = static_cast<std::size_t>(stride) * (height - 1) +
                             static_cast<std::size_t>(width) * bytesPerPixel(PixelFormat::bgra8);
    return Bitmap::wrap(width, height, stride, PixelFormat::bgra8,
                        std::shared_ptr<const std::byte[]>(mapping, first), size);
}

}  // namespace kestrelid::capture
