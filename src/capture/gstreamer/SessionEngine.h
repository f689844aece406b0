#pragma once

#include "capture/controls/DeviceControls.h"
#include "capture/gstreamer/FrameDelivery.h"
#include "capture/gstreamer/GStreamerInput.h"
#include "capture/gstreamer/LivePipeline.h"
#include "capture/gstreamer/Patience.h"
#include "capture/gstreamer/PhotoDesk.h"
#include "capture/gstreamer/StatusBoard.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace kestrelid::capture {

// Runs the pipelines of one device of a session on a thread of its own, so that nobody else waits
// for a driver longer than the interface says; another device gets another engine. A device that
// was lost after it has worked is opened again as soon as that is possible. Thread: any, unless
// another is named.
class SessionEngine final : public PipelineListener,
                            public std::enable_shared_from_this<SessionEngine> {
public:
    using Clock = std::chrono::steady_clock;

    SessionEngine(std::shared_ptr<FrameDelivery> delivery, std::shared_ptr<StatusBoard> board,
                  const Patience& patience, OpenControlNodes openControls);
    ~SessionEngine() override = default;

    // Null if there is none, or if its device is lost.
    [[nodiscard]] std::shared_ptr<const GStreamerInput> input() const;
    // One of the device that runs changes nothing.
    void setInput(std::shared_ptr<const GStreamerInput> input);
    // As setInput(), where a page that another device has shown may still be in view.
    void takeOver(std::shared_ptr<const GStreamerInput> input);
    // Whether it runs that very device or waits for it.
    [[nodiscard]] bool keeps(const GStreamerInput& input) const;
    void setPhotoDesk(std::weak_ptr<PhotoDesk> desk);

    void start();  // waits
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] bool photoWanted();  // false if none can be taken
    [[nodiscard]] std::vector<CameraControlStatus> controls() const;
    void setControl(CameraControl control, std::optional<double> value);

    void requestStop();  // from now on it shows and tells nothing
    // After requestStop(). Waits for the device to be let go, but not beyond limit; it is let go
    // later then. Not from a call of the engine.
    void finish(Clock::time_point limit);

private:
    using Lock = std::unique_lock<std::mutex>;
    enum class Phase : std::uint8_t { idle, starting, running, away };
    class DriverCall;

    void frameArrived() override;
    bool wantsFrames() override;
    void showFrame(SampleHandle frame) override;
    void stillTaken(Still still) override;
    void pipelineFailed(PipelineFailure failure) override;
    void pipelineEnded() override;
    void frameDamaged(const std::string& cause, Clock::duration lasts);

    bool startThread();

    // On the engine's thread, with the lock, which they release while they wait.
    void run();
    void step(Lock& lock);
    void begin(Lock& lock);
    bool bring(Lock& lock, Clock::time_point limit);
    void becomeLive(Lock& lock);
    void watch(Lock& lock);
    void countSilence();
    void lose(Lock& lock);
    void seek(Lock& lock);
    void rest(Lock& lock);
    bool blank(Lock& lock);
    void openAgain(Lock& lock);
    void playAgain(Lock& lock);
    bool open(Lock& lock, const VideoFormat& format, bool forStill, Clock::time_point limit);
    void close(Lock& lock);
    void takePhotos(Lock& lock, PhotoDesk& desk);
    std::optional<Still> takeStill(Lock& lock, const PhotoDimensions& bound);
    std::optional<Still> nextFrame(Lock& lock);
    std::optional<Still> stillOf(Lock& lock, const VideoFormat& format);
    std::optional<Still> settledStill(Lock& lock, const VideoFormat& format,
                                      Clock::time_point limit);
    void changeInPlace(Lock& lock, const VideoFormat& format);
    bool returnToLive(Lock& lock);
    bool awaitStill(Lock& lock, Clock::time_point limit);
    bool tendControls(Lock& lock);
    void findControls(Lock& lock);
    bool fulfilWishes(Lock& lock);
    void dropControls(Lock& lock);
    void tellControls(Lock& lock);

    [[nodiscard]] bool isStopping() const;
    [[nodiscard]] bool isLost() const;
    [[nodiscard]] bool isInterrupted() const {
        return stopping_ || removed_ || failed_ || input_ != active_;
    }
    struct Loss {
        bool isBusy;
        std::string_view cause;  // valid until a pipeline is opened
    };
    [[nodiscard]] Loss whyLost() const;
    void post(Lock& lock, CameraState state, std::string_view cause = {});

    const std::shared_ptr<FrameDelivery> delivery_;
    const Patience patience_;
    const std::shared_ptr<StatusBoard> board_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Phase phase_ = Phase::idle;
    bool stopping_ = false;
    bool finished_ = false;
    bool photoWanted_ = false;
    bool switching_ = false;  // a pipeline's failure is then no loss
    bool heals_ = false;      // a device has worked
    bool follows_ = false;    // after another engine, whose device has worked
    std::shared_ptr<const GStreamerInput> input_;
    std::shared_ptr<const GStreamerInput> active_;  // what the pipeline was made from
    std::weak_ptr<PhotoDesk> desk_;

    // Of the present pipeline.
    bool arrived_ = false;
    bool failed_ = false;
    PipelineFailure failure_;  // once failed_
    bool ended_ = false;
    Clock::time_point lastFrame_;
    Clock::duration silence_{};                     // since the last frame, as counted
    Clock::time_point lastCount_;                   // of silence_
    std::optional<Clock::time_point> driverSince_;  // while a driver is called
    std::optional<Still> still_;
    bool isDamageTold_ = false;
    bool removed_ = false;  // of the active input's device

    // Of a device that is away.
    static constexpr std::chrono::milliseconds kFirstPause{250};
    Clock::time_point liveSince_;
    Clock::time_point lostAt_;
    Clock::time_point nextBlank_;
    Clock::time_point nextTry_;
    Clock::duration pause_ = kFirstPause;  // from a try that fails to the next one

    // Of what can be changed of the device: SessionEngineControls.cpp.
    struct Wish {
        bool isMade = false;
        bool isDue = false;  // to be told to the driver
        std::optional<double> value{};
    };
    const OpenControlNodes openControls_;
    std::vector<CameraControlStatus> controls_;  // as last known; none while no device runs
    bool seeksControls_ = false;
    std::array<Wish, 4> wishes_;                      // by CameraControl
    std::shared_ptr<const GStreamerInput> wished_;    // whose they are
    std::unique_ptr<DeviceControls> deviceControls_;  // engine's thread alone
    bool isLit_ = false;                              // the torch was told so; likewise

    // Engine's thread alone.
    std::unique_ptr<LivePipeline> pipeline_;
    std::shared_ptr<const void> removal_;
    VideoFormat live_;
    VideoFormat current_;
    std::vector<VideoFormat> silent_;  // gave no still

    bool hasThread_ = false;
};

// Without the lock: a driver may hang.
class SessionEngine::DriverCall {
public:
    DriverCall(SessionEngine& engine, Lock& lock) : engine_(engine), lock_(lock) {
        engine_.driverSince_ = Clock::now();
        lock_.unlock();
    }
    DriverCall(const DriverCall&) = delete;
    DriverCall& operator=(const DriverCall&) = delete;
    ~DriverCall() {
        lock_.lock();
        engine_.driverSince_.reset();
    }

private:
    SessionEngine& engine_;
    Lock& lock_;
};

}  // namespace kestrelid::capture
