#pragma once

#include "capture/gstreamer/CallGate.h"
#include "capture/gstreamer/FrameConverter.h"
#include "capture/gstreamer/FramePool.h"
#include "capture/gstreamer/Patience.h"
#include "capture/gstreamer/PhotoDesk.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::capture {

class SessionEngine;

class GStreamerVideoOutput final : public VideoDataOutput {
public:
    // Frames that are rendered and still held. However slow their judging is, there are no more.
    static constexpr int kMostRendered = 4;

    void setVideoSettings(const VideoSettings& settings) override;
    void setSampleBufferDelegate(std::weak_ptr<SampleBufferDelegate> delegate,
                                 std::shared_ptr<DispatchQueue> queue) override;

    // For a session. Any thread.
    [[nodiscard]] bool hasDelegate() const;
    // Drops the frame if the delegate's queue has not finished with the last one.
    void post(const std::shared_ptr<LiveFrame>& frame, const std::shared_ptr<CallGate>& gate);

private:
    struct Receiver;

    mutable std::mutex mutex_;
    bool isFormatKnown_ = true;
    std::shared_ptr<Receiver> receiver_;
    const std::shared_ptr<FramePool> pool_ = std::make_shared<FramePool>(kMostRendered);
};

class GStreamerPhotoOutput final : public PhotoOutput {
public:
    explicit GStreamerPhotoOutput(Patience::Milliseconds patience)
        : desk_(std::make_shared<PhotoDesk>(patience)) {}

    std::vector<CaptureConnection> connections() const override;
    std::vector<std::string> availablePhotoCodecTypes() const override;
    std::vector<FlashMode> supportedFlashModes() const override { return {}; }
    PhotoDimensions maxPhotoDimensions() const override;
    void capturePhoto(const PhotoSettings& settings,
                      std::shared_ptr<PhotoCaptureDelegate> delegate) override;

    // For a session.
    void attach(const std::shared_ptr<SessionEngine>& engine);
    void detach(const char* cause);  // answers what waits; any thread

private:
    mutable std::mutex mutex_;
    std::weak_ptr<SessionEngine> engine_;
    const std::shared_ptr<PhotoDesk> desk_;
};

}  // namespace kestrelid::capture
