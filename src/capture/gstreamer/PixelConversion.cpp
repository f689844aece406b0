#include "capture/gstreamer/PixelConversion.h"

#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/MappedFrame.h"

#include <gst/video/video.h>

#include <utility>

namespace kestrelid::capture {

namespace {

struct FreeConverter {
    void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
};
using Converter = std::unique_ptr<GstVideoConverter, FreeConverter>;

class MappedVideo {
public:
    MappedVideo(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags)
        : mapped_(gst_video_frame_map(&frame_, &info, buffer, flags)) {}
    MappedVideo(const MappedVideo&) = delete;
    MappedVideo& operator=(const MappedVideo&) = delete;
    ~MappedVideo() {
        if (mapped_)
            gst_video_frame_unmap(&frame_);
    }
    [[nodiscard]] GstVideoFrame* frame() { return mapped_ ? &frame_ : nullptr; }

private:
    GstVideoFrame frame_{};
    bool mapped_;
};

std::optional<Bitmap> convert(const GstVideoInfo& from, GstBuffer* source,
                              const PhotoDimensions& size) {
    GstVideoInfo to;
    if (!gst_video_info_set_format(&to, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(size.width),
                                   static_cast<guint>(size.height)))
        return std::nullopt;
    // The converter refuses to change these.
    GST_VIDEO_INFO_FPS_N(&to) = GST_VIDEO_INFO_FPS_N(&from);
    GST_VIDEO_INFO_FPS_D(&to) = GST_VIDEO_INFO_FPS_D(&from);
    GST_VIDEO_INFO_INTERLACE_MODE(&to) = GST_VIDEO_INFO_INTERLACE_MODE(&from);
    const Converter converter(gst_video_converter_new(&from, &to, nullptr));
    BufferHandle target(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&to), nullptr));
    if (!converter || !target)
        return std::nullopt;
    {
        MappedVideo input(from, source, GST_MAP_READ);
        MappedVideo output(to, target.get(), GST_MAP_WRITE);
        if (!input.frame() || !output.frame())
            return std::nullopt;
        gst_video_converter_frame(converter.get(), input.frame(), output.frame());
    }
    const CapsHandle caps(gst_video_info_to_caps(&to));
    return mapFrame(SampleHandle(gst_sample_new(target.get(), caps.get(), nullptr, nullptr)));
}

GstVideoFormat videoFormat(PixelFormat format) {
    switch (format) {
    case PixelFormat::bgra8:
        return GST_VIDEO_FORMAT_BGRx;
    case PixelFormat::rgb8:
        return GST_VIDEO_FORMAT_RGB;
    case PixelFormat::bgr8:
        return GST_VIDEO_FORMAT_BGR;
    case PixelFormat::rgba8:
        return GST_VIDEO_FORMAT_RGBx;
    case PixelFormat::gray8:
        return GST_VIDEO_FORMAT_GRAY8;
    }
    return GST_VIDEO_FORMAT_UNKNOWN;
}

}  // namespace

std::optional<Bitmap> convertToBgra(const Bitmap& bitmap, const PhotoDimensions& size) {
    GstVideoInfo info;
    if (!gst_video_info_set_format(&info, videoFormat(bitmap.format()),
                                   static_cast<guint>(bitmap.width()),
                                   static_cast<guint>(bitmap.height())))
        return std::nullopt;
    const std::size_t bytes =
        static_cast<std::size_t>(bitmap.stride()) * (bitmap.height() - 1) +
        static_cast<std::size_t>(bitmap.width()) * bytesPerPixel(bitmap.format());
    info.stride[0] = static_cast<gint>(bitmap.stride());
    info.size = bytes;
    const BufferHandle buffer(gst_buffer_new_wrapped_full(
        GST_MEMORY_FLAG_READONLY, const_cast<std::byte*>(bitmap.row(0)), bytes, 0, bytes,
        new Bitmap(bitmap), [](gpointer owner) { delete static_cast<Bitmap*>(owner); }));
    return convert(info, buffer.get(), size);
}

std::optional<Bitmap> convertToBgra(GstSample* sample, const PhotoDimensions& bound) {
    GstVideoInfo info;
    GstCaps* caps = gst_sample_get_caps(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!caps || !buffer || !gst_video_info_from_caps(&info, caps))
        return std::nullopt;
    const PhotoDimensions size{.width = GST_VIDEO_INFO_WIDTH(&info),
                               .height = GST_VIDEO_INFO_HEIGHT(&info)};
    if (size.width <= 0 || size.height <= 0)
        return std::nullopt;
    return convert(info, buffer, scaledInto(size, bound));
}

}  // namespace kestrelid::capture
