#pragma once

#include "capture/gstreamer/FramePool.h"
#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/PixelConversion.h"
#include "imagefile/JpegCodec.h"

#include <kestrelid/CaptureServices.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kestrelid::capture {

// Turns a camera's samples, of raw video or motion JPEG, into frames of about kLiveDimensions.
// Thread: any.
class FrameConverter {
public:
    // Gets why a sample gave no frame, and for how long no sample has given one; an empty cause
    // once one gives a frame again. Any thread.
    using Damaged =
        std::function<void(const std::string& cause, std::chrono::steady_clock::duration lasts)>;

    void onDamage(Damaged damaged);

    // In memory of pool. Nothing if pool has none, or if the sample is damaged. Throws
    // std::bad_alloc.
    [[nodiscard]] std::optional<Bitmap> convert(GstSample* sample, FramePool& pool);

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] std::optional<Bitmap> fromJpeg(GstBuffer* buffer, FramePool& pool);
    [[nodiscard]] std::optional<Bitmap> fromRaw(const GstCaps* caps, GstBuffer* buffer,
                                                FramePool& pool);
    [[nodiscard]] bool decodeInto(const PixelTarget& target);

    std::mutex mutex_;
    Damaged damaged_;
    PixelConverter pixels_;
    std::unique_ptr<imagefile::JpegFrameDecoder> jpeg_;  // once there was one
    std::shared_ptr<std::byte[]> decoded_;               // between decoding and scaling
    std::size_t decodedBytes_ = 0;
    std::string fault_;  // of this sample; empty: none
    std::optional<Clock::time_point> damagedSince_;
};

// A frame from its arrival to the last look at it. Thread: any.
class LiveFrame {
public:
    LiveFrame(SampleHandle sample, std::shared_ptr<FrameConverter> converter)
        : converter_(std::move(converter)), sample_(std::move(sample)) {}
    // Of BGRA8.
    explicit LiveFrame(Bitmap bitmap) : bitmap_(std::move(bitmap)) {}

    // Converted once, for all who look at it.
    [[nodiscard]] std::optional<Bitmap> shared(FramePool& pool);

    // A copy in memory of pool.
    [[nodiscard]] std::optional<Bitmap> copy(FramePool& pool);

    // From now on there is nothing to copy: the device's memory goes back to it.
    void letGo();

private:
    const std::shared_ptr<FrameConverter> converter_;
    std::mutex mutex_;
    SampleHandle sample_;
    std::optional<Bitmap> bitmap_;
};

}  // namespace kestrelid::capture
