#pragma once

#include "capture/gstreamer/FrameConverter.h"
#include "capture/gstreamer/FramePool.h"
#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/GStreamerInput.h"
#include "capture/gstreamer/GStreamerOutputs.h"

#include <kestrelid/CaptureServices.h>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kestrelid::capture {

// Takes the frames of one session to its preview surfaces and its video output. They are converted
// once somebody looks at them.
class FrameDelivery {
public:
    FrameDelivery();

    void setOutput(std::shared_ptr<GStreamerVideoOutput> output);  // any thread
    void addSurface(std::weak_ptr<PreviewSurface> surface);        // any thread
    void setMounting(const Mounting& mounting);                    // any thread
    [[nodiscard]] bool hasConsumers();                             // any thread
    void deliver(SampleHandle frame);                              // any thread
    // The device gets back the memory of the frame that is still being looked at.
    void letGo();  // any thread
    void onDamage(FrameConverter::Damaged damaged) { converter_->onDamage(std::move(damaged)); }
    // A black frame as large as the last one, in the place of frames that do not come.
    // Not while a frame is delivered, nor without memory.
    void deliverBlank() noexcept;  // any thread

    // Once it has returned no call begins, and none is under way, except one that lasts beyond
    // limit and one that this was called from. False if a surface called it. Thread: any.
    bool close(std::chrono::steady_clock::time_point limit);

private:
    using Surfaces = std::vector<std::shared_ptr<PreviewSurface>>;

    void deliver(const std::shared_ptr<LiveFrame>& frame);
    [[nodiscard]] Surfaces surfaces();
    void show(const Surfaces& surfaces, const Bitmap& frame);

    const std::shared_ptr<CallGate> surfaceCalls_;
    const std::shared_ptr<CallGate> outputCalls_;
    const std::shared_ptr<FrameConverter> converter_ = std::make_shared<FrameConverter>();
    FramePool shown_;
    std::mutex delivering_;  // one frame at a time
    PhotoDimensions size_;   // of the last frame; guarded by delivering_
    std::mutex mutex_;
    std::shared_ptr<GStreamerVideoOutput> output_;
    std::vector<std::weak_ptr<PreviewSurface>> surfaces_;
    std::weak_ptr<LiveFrame> last_;
    Mounting mounting_;
};

}  // namespace kestrelid::capture
