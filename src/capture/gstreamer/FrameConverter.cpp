#include "capture/gstreamer/FrameConverter.h"

#include "capture/gstreamer/FormatChoice.h"

#include <algorithm>
#include <span>
#include <utility>

namespace kestrelid::capture {

namespace {

class MappedBytes {
public:
    explicit MappedBytes(GstBuffer* buffer)
        : buffer_(buffer), mapped_(gst_buffer_map(buffer, &map_, GST_MAP_READ)) {}
    MappedBytes(const MappedBytes&) = delete;
    MappedBytes& operator=(const MappedBytes&) = delete;
    ~MappedBytes() {
        if (mapped_)
            gst_buffer_unmap(buffer_, &map_);
    }
    [[nodiscard]] std::span<const std::byte> bytes() const {
        return mapped_ ? std::span(reinterpret_cast<const std::byte*>(map_.data), map_.size)
                       : std::span<const std::byte>();
    }

private:
    GstBuffer* buffer_;
    GstMapInfo map_{};
    bool mapped_;
};

}  // namespace

void FrameConverter::onDamage(Damaged damaged) {
    const std::lock_guard lock(mutex_);
    damaged_ = std::move(damaged);
}

std::optional<Bitmap> FrameConverter::convert(GstSample* sample, FramePool& pool) {
    GstCaps* caps = gst_sample_get_caps(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!caps || !buffer)
        return std::nullopt;
    std::unique_lock lock(mutex_);
    fault_.clear();
    const bool isJpeg = gst_structure_has_name(gst_caps_get_structure(caps, 0), "image/jpeg");
    std::optional<Bitmap> frame = isJpeg ? fromJpeg(buffer, pool) : fromRaw(caps, buffer, pool);
    const bool isWhole = fault_.empty();
    if (isWhole && !(frame && damagedSince_))
        return frame;
    const auto now = Clock::now();
    const auto lasts = now - damagedSince_.value_or(now);
    if (isWhole)
        damagedSince_.reset();
    else
        damagedSince_ = now - lasts;
    const Damaged damaged = damaged_;
    const std::string fault = fault_;
    lock.unlock();
    if (damaged)
        damaged(fault, lasts);
    return frame;
}

std::optional<Bitmap> FrameConverter::fromRaw(const GstCaps* caps, GstBuffer* buffer,
                                              FramePool& pool) {
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, caps) || GST_VIDEO_INFO_WIDTH(&info) <= 0 ||
        GST_VIDEO_INFO_HEIGHT(&info) <= 0) {
        fault_ = "a frame of an unknown format";
        return std::nullopt;
    }
    const PhotoDimensions size = liveDimensions(
        {.width = GST_VIDEO_INFO_WIDTH(&info), .height = GST_VIDEO_INFO_HEIGHT(&info)});
    return pool.make(size.width, size.height, [&](std::byte* pixels) {
        const bool converted = pixels_.convert(info, buffer, {.pixels = pixels, .size = size});
        if (!converted)
            fault_ = "a frame with too few pixels";
        return converted;
    });
}

std::optional<Bitmap> FrameConverter::fromJpeg(GstBuffer* buffer, FramePool& pool) {
    if (!jpeg_)
        jpeg_ = std::make_unique<imagefile::JpegFrameDecoder>();
    const MappedBytes picture(buffer);
    if (!jpeg_->open(picture.bytes(), 0)) {
        fault_ = jpeg_->cause();
        return std::nullopt;
    }
    const PhotoDimensions size =
        liveDimensions({.width = jpeg_->width(), .height = jpeg_->height()});
    if (!jpeg_->open(picture.bytes(), std::max(size.width, size.height)))
        return std::nullopt;
    return pool.make(size.width, size.height, [&](std::byte* pixels) {
        return decodeInto({.pixels = pixels, .size = size});
    });
}

bool FrameConverter::decodeInto(const PixelTarget& target) {
    const PixelTarget whole{.pixels = nullptr,
                            .size = {.width = jpeg_->width(), .height = jpeg_->height()}};
    const bool isScaled = !(whole.size == target.size);
    if (isScaled && decodedBytes_ != whole.bytes()) {
        decoded_ = std::make_shared<std::byte[]>(whole.bytes());
        decodedBytes_ = whole.bytes();
    }
    const std::ptrdiff_t stride = std::ptrdiff_t{4} * whole.size.width;
    if (!jpeg_->decode(isScaled ? decoded_.get() : target.pixels, stride, PixelFormat::bgra8)) {
        fault_ = jpeg_->cause();
        return false;
    }
    if (!isScaled)
        return true;
    const auto bitmap = Bitmap::wrap(whole.size.width, whole.size.height, stride,
                                     PixelFormat::bgra8, decoded_, decodedBytes_);
    return bitmap && pixels_.convert(*bitmap, target);
}

std::optional<Bitmap> LiveFrame::shared(FramePool& pool) {
    const std::lock_guard lock(mutex_);
    if (!bitmap_ && sample_)
        bitmap_ = converter_->convert(sample_.get(), pool);
    return bitmap_;
}

std::optional<Bitmap> LiveFrame::copy(FramePool& pool) {
    const std::lock_guard lock(mutex_);
    if (bitmap_)
        return pool.copy(*bitmap_);
    return sample_ ? converter_->convert(sample_.get(), pool) : std::nullopt;
}

void LiveFrame::letGo() {
    const std::lock_guard lock(mutex_);
    sample_.reset();
}

}  // namespace kestrelid::capture
