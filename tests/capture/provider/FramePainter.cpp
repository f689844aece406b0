#include "tests/capture/provider/FramePainter.h"

#include "tests/capture/provider/PictureFile.h"

#include <algorithm>
#include <array>
#include <turbojpeg.h>

namespace kestrelid::testcamera {
namespace {

// An RGB picture of eight bars.
Picture colourBars(int width, int height) {
    Picture picture{width, height, std::vector<std::uint8_t>(std::size_t(3) * width * height)};
    std::uint8_t* pixel = picture.rgb.data();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int bar = 7 - x * 8 / width;
            *pixel++ = bar & 2 ? 191 : 0;
            *pixel++ = bar & 4 ? 191 : 0;
            *pixel++ = bar & 1 ? 191 : 0;
        }
    }
    return picture;
}

// The largest place of the picture's shape within the frame, on whole chroma samples.
GstVideoRectangle place(const Picture& picture, int width, int height) {
    const double scale = std::min(double(width) / picture.width, double(height) / picture.height);
    GstVideoRectangle at{};
    at.w = std::min(width, std::max(2, int(picture.width * scale + 0.5) & ~1));
    at.h = std::min(height, std::max(2, int(picture.height * scale + 0.5) & ~1));
    at.x = (width - at.w) / 2 & ~1;
    at.y = (height - at.h) / 2 & ~1;
    return at;
}

void convert(const Picture& picture, const GstVideoInfo& to, GstBuffer* canvas) {
    GstVideoInfo from;
    gst_video_info_set_format(&from, GST_VIDEO_FORMAT_RGB, guint(picture.width),
                              guint(picture.height));
    GST_VIDEO_INFO_PLANE_STRIDE(&from, 0) = 3 * picture.width;
    from.size = picture.rgb.size();
    from.fps_n = to.fps_n;
    from.fps_d = to.fps_d;

    const auto at = place(picture, to.width, to.height);
    auto* options = gst_structure_new(
        "options", GST_VIDEO_CONVERTER_OPT_DEST_X, G_TYPE_INT, at.x, GST_VIDEO_CONVERTER_OPT_DEST_Y,
        G_TYPE_INT, at.y, GST_VIDEO_CONVERTER_OPT_DEST_WIDTH, G_TYPE_INT, at.w,
        GST_VIDEO_CONVERTER_OPT_DEST_HEIGHT, G_TYPE_INT, at.h, nullptr);
    auto* converter = gst_video_converter_new(&from, &to, options);
    auto* source = gst_buffer_new_memdup(picture.rgb.data(), picture.rgb.size());
    GstVideoFrame in;
    GstVideoFrame out;
    if (converter && gst_video_frame_map(&in, &from, source, GST_MAP_READ)) {
        if (gst_video_frame_map(&out, &to, canvas, GST_MAP_WRITE)) {
            gst_video_converter_frame(converter, &in, &out);
            gst_video_frame_unmap(&out);
        }
        gst_video_frame_unmap(&in);
    }
    gst_buffer_unref(source);
    if (converter)
        gst_video_converter_free(converter);
}

}  // namespace

FramePainter::FramePainter(const GstVideoInfo& format, const std::string& picture)
    : format_(format), showsPicture_(!picture.empty()) {
    gst_video_info_set_format(&planar_, GST_VIDEO_FORMAT_I420, guint(format.width),
                              guint(format.height));
    planar_.fps_n = format.fps_n;
    planar_.fps_d = format.fps_d;
    const bool isJpeg = GST_VIDEO_INFO_FORMAT(&format) == GST_VIDEO_FORMAT_ENCODED;
    if (isJpeg)
        gst_video_colorimetry_from_string(&planar_.colorimetry, "1:4:0:0");  // as JFIF has it
    else if (GST_VIDEO_INFO_IS_YUV(&format))
        planar_.colorimetry = format.colorimetry;

    canvas_ = gst_buffer_new_allocate(nullptr, planar_.size, nullptr);
    auto content = showsPicture_ ? readPicture(picture) : std::nullopt;
    if (!content)
        content = colourBars(format.width, format.height);
    convert(*content, planar_, canvas_);
    background_.resize(planar_.size);
    gst_buffer_extract(canvas_, 0, background_.data(), background_.size());

    if (isJpeg)
        compressor_ = tjInitCompress();
    else
        converter_ = gst_video_converter_new(&planar_, &format_, nullptr);
}

FramePainter::~FramePainter() {
    if (compressor_)
        tjDestroy(compressor_);
    if (converter_)
        gst_video_converter_free(converter_);
    gst_buffer_unref(canvas_);
}

GstBuffer* FramePainter::paint(std::uint64_t number) {
    gst_buffer_fill(canvas_, 0, background_.data(), background_.size());
    GstVideoFrame canvas;
    if (!gst_video_frame_map(&canvas, &planar_, canvas_, GST_MAP_READWRITE))
        return nullptr;
    // A picture keeps all but its lowest rows.
    const int width = planar_.width;
    const int mark = std::max(2, width / 32);
    const int left = int(number * (mark / 2) % std::max(1, width - mark));
    const int top = showsPicture_ ? planar_.height - std::max(2, planar_.height / 60) : 0;
    for (int y = top; y < planar_.height; ++y) {
        auto* row = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&canvas, 0)) +
                    std::ptrdiff_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&canvas, 0);
        if (showsPicture_)
            std::fill_n(row, width, std::uint8_t(16));
        std::fill_n(row + left, mark, std::uint8_t(235));
    }

    GstBuffer* result = nullptr;
    if (compressor_) {
        gst_video_frame_unmap(&canvas);
        return compress();
    }
    result = gst_buffer_new_allocate(nullptr, format_.size, nullptr);
    GstVideoFrame out;
    if (result && converter_ && gst_video_frame_map(&out, &format_, result, GST_MAP_WRITE)) {
        gst_video_converter_frame(converter_, &canvas, &out);
        gst_video_frame_unmap(&out);
    }
    gst_video_frame_unmap(&canvas);
    return result;
}

GstBuffer* FramePainter::compress() {
    GstVideoFrame canvas;
    if (!gst_video_frame_map(&canvas, &planar_, canvas_, GST_MAP_READ))
        return nullptr;
    std::array<const unsigned char*, 3> planes{};
    std::array<int, 3> strides{};
    for (unsigned plane = 0; plane < 3; ++plane) {
        planes[plane] = static_cast<unsigned char*>(GST_VIDEO_FRAME_PLANE_DATA(&canvas, plane));
        strides[plane] = GST_VIDEO_FRAME_PLANE_STRIDE(&canvas, plane);
    }
    unsigned char* file = nullptr;
    unsigned long size = 0;
    constexpr int kQuality = 85;
    const int failed =
        tjCompressFromYUVPlanes(compressor_, planes.data(), planar_.width, strides.data(),
                                planar_.height, TJSAMP_420, &file, &size, kQuality, TJFLAG_FASTDCT);
    gst_video_frame_unmap(&canvas);
    GstBuffer* result = failed ? nullptr : gst_buffer_new_memdup(file, size);
    tjFree(file);
    return result;
}

}  // namespace kestrelid::testcamera
