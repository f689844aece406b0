#pragma once

#include "capture/gstreamer/FrameDelivery.h"
#include "capture/gstreamer/GStreamerInput.h"
#include "capture/gstreamer/LivePipeline.h"
#include "capture/gstreamer/Patience.h"
#include "capture/gstreamer/PhotoDesk.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace kestrelid::capture {

// Runs the pipelines of one session on a thread of its own, so that nobody else waits for a driver
// longer than the interface says. Thread: any, unless another is named.
class SessionEngine final : public PipelineListener,
                            public std::enable_shared_from_this<SessionEngine> {
public:
    SessionEngine(std::shared_ptr<FrameDelivery> delivery, const Patience& patience);
    ~SessionEngine() override;

    // Null if there is none, or if its device was lost.
    [[nodiscard]] std::shared_ptr<const GStreamerInput> input() const;
    void setInput(std::shared_ptr<const GStreamerInput> input);
    void setPhotoDesk(std::weak_ptr<PhotoDesk> desk);

    void start();  // waits
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] bool photoWanted();  // false if none can be taken

    void requestStop();
    // After requestStop(), one of them.
    void finish();   // waits, but not for a driver that hangs
    void abandon();  // does not wait

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;
    enum class Phase : std::uint8_t { idle, starting, running };

    void frameArrived() override;
    bool wantsFrames() override;
    void showFrame(SampleHandle frame) override;
    void stillTaken(SampleHandle still) override;
    void pipelineFailed() override;
    void pipelineEnded() override;

    bool startThread();

    // On the engine's thread, with the lock, which they release while they wait.
    void run();
    void step(Lock& lock);
    void begin(Lock& lock);
    void watch(Lock& lock);
    void lose(Lock& lock);
    void playAgain(Lock& lock);
    bool open(Lock& lock, const VideoFormat& format, bool forStill, Clock::time_point limit);
    void close(Lock& lock);
    void takePhotos(Lock& lock, PhotoDesk& desk);
    SampleHandle takeStill(Lock& lock, const VideoFormat& format);
    void awaitNextFrame(Lock& lock, const VideoFormat& format);
    bool switchInPlace(Lock& lock, const VideoFormat& format);
    bool returnToLive(Lock& lock);
    bool awaitStill(Lock& lock, Clock::duration patience);

    [[nodiscard]] bool isLost() const;
    [[nodiscard]] bool isInterrupted() const { return stopping_ || removed_ || failed_; }

    const std::shared_ptr<FrameDelivery> delivery_;
    const Patience patience_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Phase phase_ = Phase::idle;
    bool stopping_ = false;
    bool finished_ = false;
    bool photoWanted_ = false;
    bool switching_ = false;  // a pipeline's failure is then no loss
    std::shared_ptr<const GStreamerInput> input_;
    std::shared_ptr<const GStreamerInput> active_;  // what the pipeline was made from
    std::weak_ptr<PhotoDesk> desk_;

    // Of the present pipeline.
    bool arrived_ = false;
    bool failed_ = false;
    bool ended_ = false;
    Clock::time_point lastFrame_;
    SampleHandle still_;
    bool removed_ = false;  // of the active input's device

    // Engine's thread alone.
    std::unique_ptr<LivePipeline> pipeline_;
    std::shared_ptr<const void> removal_;
    VideoFormat live_;
    VideoFormat current_;

    std::thread thread_;
};

}  // namespace kestrelid::capture
