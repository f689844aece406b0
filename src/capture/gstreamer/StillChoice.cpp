#include "capture/gstreamer/StillChoice.h"

#include "base/GreyStatistics.h"
#include "imagefile/JpegCodec.h"

#include <cmath>
#include <gst/video/video.h>
#include <memory>
#include <span>
#include <utility>

namespace kestrelid::capture {

namespace {

struct Rows {
    const std::byte* first;
    std::ptrdiff_t stride;  // bytes from row to row
    std::ptrdiff_t step;    // and from pixel to pixel
    int width;
    int height;
};

StillLook lookOf(const Rows& rows) {
    base::GreyStatistics statistics;
    const int rowStep = base::GreyStatistics::rowStep(rows.width, rows.height);
    for (int y = 0; y < rows.height; y += rowStep) {
        const std::byte* pixel = rows.first + y * rows.stride;
        for (int x = 0; x < rows.width; ++x, pixel += rows.step)
            statistics.add(std::to_integer<int>(*pixel));
        statistics.endRow();
    }
    return {.sharpness = statistics.sharpness(), .brightness = statistics.brightness()};
}

std::optional<StillLook> lookOf(const JpegStill& still) {
    constexpr int kSufficientSide = 1280;
    imagefile::JpegFrameDecoder decoder;
    if (!decoder.open(still.file, kSufficientSide))
        return std::nullopt;
    const std::ptrdiff_t stride = decoder.width();
    const auto grey = std::make_unique<std::byte[]>(static_cast<std::size_t>(stride) *
                                                    static_cast<std::size_t>(decoder.height()));
    if (!decoder.decode(grey.get(), stride, PixelFormat::gray8))
        return std::nullopt;
    return lookOf(Rows{.first = grey.get(),
                       .stride = stride,
                       .step = 1,
                       .width = decoder.width(),
                       .height = decoder.height()});
}

std::optional<StillLook> lookOf(const SampleHandle& sample) {
    GstVideoInfo info;
    GstVideoFrame frame;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get())) ||
        !gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample.get()), GST_MAP_READ))
        return std::nullopt;
    // Luma, or green.
    const guint component = GST_VIDEO_INFO_IS_RGB(&info) ? GST_VIDEO_COMP_G : GST_VIDEO_COMP_Y;
    std::optional<StillLook> look = StillLook{};  // of deeper pixels: any frame is as good
    if (GST_VIDEO_INFO_COMP_DEPTH(&info, component) == 8)
        look = lookOf(Rows{.first = reinterpret_cast<const std::byte*>(
                               GST_VIDEO_FRAME_COMP_DATA(&frame, component)),
                           .stride = GST_VIDEO_FRAME_COMP_STRIDE(&frame, component),
                           .step = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, component),
                           .width = GST_VIDEO_FRAME_COMP_WIDTH(&frame, component),
                           .height = GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component)});
    gst_video_frame_unmap(&frame);
    return look;
}

std::optional<StillLook> lookOf(const Bitmap& /*picture*/) {
    return StillLook{};
}

}  // namespace

std::optional<StillLook> lookOf(const Still& still) {
    return std::visit([](const auto& pixels) { return lookOf(pixels); }, still.pixels);
}

void StillChoice::add(Still still, const StillLook& look) {
    constexpr double kSettled = 0.02;  // of the full brightness, from one frame to the next
    const bool isSettled = brightness_ && std::abs(look.brightness - *brightness_) <= kSettled;
    brightness_ = look.brightness;
    if (!isSettled && settled_ > 0)
        return;
    if (!isSettled || settled_ == 0 || look.sharpness > bestLook_.sharpness) {
        best_ = std::move(still);
        bestLook_ = look;
    }
    settled_ += isSettled ? 1 : 0;
}

std::optional<Still> StillChoice::take() {
    return std::exchange(best_, std::nullopt);
}

}  // namespace kestrelid::capture
