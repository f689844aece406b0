#pragma once

#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/GStreamerInput.h"
#include "capture/gstreamer/GStreamerOutputs.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <mutex>
#include <vector>

namespace kestrelid::capture {

// Takes the frames of one session to its preview surfaces and its video output.
class FrameDelivery {
public:
    FrameDelivery();

    void setOutput(std::shared_ptr<GStreamerVideoOutput> output);  // any thread
    void addSurface(std::weak_ptr<PreviewSurface> surface);        // any thread
    void setMounting(const Mounting& mounting);                    // any thread
    [[nodiscard]] bool hasConsumers();                             // any thread
    void deliver(SampleHandle frame);                              // any thread
    // A black frame as large as the last one, in the place of frames that do not come.
    // Not while a frame is delivered, nor without memory.
    void deliverBlank() noexcept;  // any thread

    // Once it has returned no call begins, and none is under way, except one that hangs and one
    // that this was called from. False if a surface called it. Thread: any.
    bool close();

private:
    void deliver(const Bitmap& frame);
    void show(const Bitmap& frame);

    const std::shared_ptr<CallGate> surfaceCalls_;
    const std::shared_ptr<CallGate> outputCalls_;
    std::mutex delivering_;  // one frame at a time
    PhotoDimensions size_;   // of the last frame; guarded by delivering_
    std::mutex mutex_;
    std::shared_ptr<GStreamerVideoOutput> output_;
    std::vector<std::weak_ptr<PreviewSurface>> surfaces_;
    Mounting mounting_;
};

}  // namespace kestrelid::capture
