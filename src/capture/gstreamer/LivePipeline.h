#pragma once

#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/Still.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kestrelid::capture {

// Why a pipeline delivers nothing.
struct PipelineFailure {
    bool isBusy = false;  // another program has the device
    std::string cause;    // one line
};

// What a running pipeline reports. Nothing here throws, since GStreamer calls it. Thread: any of
// GStreamer's.
class PipelineListener {
public:
    virtual ~PipelineListener() = default;

    // A frame came from the device or file, whether or not it is shown.
    virtual void frameArrived() = 0;
    // Frames are converted only while this says so.
    [[nodiscard]] virtual bool wantsFrames() = 0;
    // In the source's own format; its memory may be a driver's.
    virtual void showFrame(SampleHandle frame) = 0;
    // The still that armStill() asked for, a copy.
    virtual void stillTaken(Still still) = 0;
    virtual void pipelineFailed(PipelineFailure failure) = 0;
    virtual void pipelineEnded() = 0;
};

// A pipeline from its start to its end. Thread: one, which may be blocked while a driver is.
class LivePipeline {
public:
    // listener: called until this is destroyed, and held.
    LivePipeline(ElementHandle pipeline, bool isFile, std::shared_ptr<PipelineListener> listener);
    LivePipeline(const LivePipeline&) = delete;
    LivePipeline& operator=(const LivePipeline&) = delete;
    ~LivePipeline();  // lets go of the device

    // False if it failed at once; listener may know why.
    [[nodiscard]] bool play();

    // Goes back to the start of a file.
    [[nodiscard]] bool rewind();

    // Changes the device's format in place.
    void switchTo(const VideoFormat& format);

    // The next frame of that size and encoding is copied for stillTaken(), one of a decoder in any
    // layout.
    void armStill(const VideoFormat& format);
    void disarmStill();

    // While held, frames are not shown.
    void holdFrames(bool held) { holdsFrames_ = held; }

private:
    struct Callbacks;

    void takeStill(GstPad* pad, GstBuffer* buffer) noexcept;

    const ElementHandle pipeline_;
    const ElementHandle sink_;
    const ElementHandle filter_;  // null if the format stays
    const ElementHandle tap_;     // null if stills come from elsewhere
    const bool isFile_;
    const std::shared_ptr<PipelineListener> listener_;
    std::atomic<bool> holdsFrames_ = false;
    std::mutex stillMutex_;
    std::optional<VideoFormat> armed_;
};

}  // namespace kestrelid::capture
