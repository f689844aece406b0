#pragma once

#include "capture/gstreamer/FrameDelivery.h"
#include "capture/gstreamer/GStreamerInput.h"
#include "capture/gstreamer/GStreamerOutputs.h"
#include "capture/gstreamer/SessionEngine.h"

#include <kestrelid/CaptureServices.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace kestrelid::capture {

// The engine of the present device. Thread: any.
class PresentEngine {
public:
    explicit PresentEngine(std::shared_ptr<SessionEngine> first) : engine_(std::move(first)) {}

    [[nodiscard]] std::shared_ptr<SessionEngine> get() const {
        const std::lock_guard lock(mutex_);
        return engine_;
    }
    std::shared_ptr<SessionEngine> operator->() const { return get(); }

    // Gives the former one back.
    std::shared_ptr<SessionEngine> replace(std::shared_ptr<SessionEngine> next) {
        const std::lock_guard lock(mutex_);
        return std::exchange(engine_, std::move(next));
    }

private:
    mutable std::mutex mutex_;
    std::shared_ptr<SessionEngine> engine_;
};

class GStreamerSession final : public CaptureSession {
public:
    GStreamerSession(const Patience& patience, OpenControlNodes openControls);
    ~GStreamerSession() override;

    void beginConfiguration() override;
    void commitConfiguration() override;
    void setSessionPreset(SessionPreset preset) override;
    bool canAddInput(const std::shared_ptr<CaptureInput>& input) const override;
    void addInput(std::shared_ptr<CaptureInput> input) override;
    bool canAddOutput(const std::shared_ptr<CaptureOutput>& output) const override;
    void addOutput(std::shared_ptr<CaptureOutput> output) override;
    void startRunning() override;
    bool isRunning() const override;
    CameraStatus status() const override;
    void observeStatus(std::function<void()> observer) override;
    bool replaceInput(std::shared_ptr<CaptureInput> input) override;
    std::vector<CameraControlStatus> controls() const override;
    void setControl(CameraControl control, std::optional<double> value) override;
    void addPreviewSurface(std::weak_ptr<PreviewSurface> surface) override;

private:
    void apply();

    const Patience patience_;
    const OpenControlNodes openControls_;
    const std::shared_ptr<FrameDelivery> delivery_;
    const std::shared_ptr<StatusBoard> board_;
    PresentEngine engine_;
    std::shared_ptr<GStreamerPhotoOutput> photoOutput_;
    std::shared_ptr<GStreamerVideoOutput> videoOutput_;
    // The next commitConfiguration() applies these.
    int configurations_ = 0;  // begun and not committed
    std::shared_ptr<GStreamerInput> newInput_;
    std::shared_ptr<GStreamerPhotoOutput> newPhotoOutput_;
    std::shared_ptr<GStreamerVideoOutput> newVideoOutput_;
};

}  // namespace kestrelid::capture
