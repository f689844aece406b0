#include "capture/gstreamer/GStreamerSession.h"

#include <chrono>
#include <utility>

namespace kestrelid::capture {

GStreamerSession::GStreamerSession(const Patience& patience, OpenControlNodes openControls)
    : delivery_(std::make_shared<FrameDelivery>()),
      engine_(std::make_shared<SessionEngine>(delivery_, patience, std::move(openControls))) {}

GStreamerSession::~GStreamerSession() {
    // Most devices are let go in time for the host to use them at once.
    constexpr std::chrono::milliseconds kPatience{15};
    const auto limit = SessionEngine::Clock::now() + kPatience;
    engine_->requestStop();
    engine_->board().close(limit);
    // A surface that releases the session runs on a thread that the engine has to wait for.
    const bool outside = delivery_->close(limit);
    if (photoOutput_)
        photoOutput_->detach("the camera was released");
    if (outside)
        engine_->finish(limit);
    delivery_->setOutput(nullptr);
}

void GStreamerSession::beginConfiguration() {
    ++configurations_;
}

void GStreamerSession::commitConfiguration() {
    if (configurations_ > 0 && --configurations_ == 0)
        apply();
}

void GStreamerSession::setSessionPreset(SessionPreset /*preset*/) {
    // Formats are always chosen for SessionPreset::photo, the only preset: see FormatChoice.h.
}

bool GStreamerSession::canAddInput(const std::shared_ptr<CaptureInput>& input) const {
    const auto own = std::dynamic_pointer_cast<GStreamerInput>(input);
    if (!own || newInput_)
        return false;
    const auto current = engine_->input();
    return !current || current->isSameDevice(*own);
}

void GStreamerSession::addInput(std::shared_ptr<CaptureInput> input) {
    if (!canAddInput(input))
        return;
    newInput_ = std::dynamic_pointer_cast<GStreamerInput>(input);
    if (configurations_ == 0)
        apply();
}

bool GStreamerSession::canAddOutput(const std::shared_ptr<CaptureOutput>& output) const {
    if (std::dynamic_pointer_cast<GStreamerPhotoOutput>(output))
        return !photoOutput_ && !newPhotoOutput_;
    if (std::dynamic_pointer_cast<GStreamerVideoOutput>(output))
        return !videoOutput_ && !newVideoOutput_;
    return false;
}

void GStreamerSession::addOutput(std::shared_ptr<CaptureOutput> output) {
    if (!canAddOutput(output))
        return;
    if (auto photo = std::dynamic_pointer_cast<GStreamerPhotoOutput>(output))
        newPhotoOutput_ = std::move(photo);
    else
        newVideoOutput_ = std::dynamic_pointer_cast<GStreamerVideoOutput>(output);
    if (configurations_ == 0)
        apply();
}

void GStreamerSession::apply() {
    if (newInput_)
        engine_->setInput(std::exchange(newInput_, nullptr));
    if (newPhotoOutput_) {
        photoOutput_ = std::exchange(newPhotoOutput_, nullptr);
        photoOutput_->attach(engine_);
    }
    if (newVideoOutput_) {
        videoOutput_ = std::exchange(newVideoOutput_, nullptr);
        delivery_->setOutput(videoOutput_);
    }
}

void GStreamerSession::startRunning() {
    engine_->start();
}

bool GStreamerSession::isRunning() const {
    return engine_->isRunning();
}

CameraStatus GStreamerSession::status() const {
    return engine_->board().status();
}

void GStreamerSession::observeStatus(std::function<void()> observer) {
    engine_->board().observe(std::move(observer));
}

std::vector<CameraControlStatus> GStreamerSession::controls() const {
    return engine_->controls();
}

void GStreamerSession::setControl(CameraControl control, std::optional<double> value) {
    engine_->setControl(control, value);
}

void GStreamerSession::addPreviewSurface(std::weak_ptr<PreviewSurface> surface) {
    delivery_->addSurface(std::move(surface));
}

}  // namespace kestrelid::capture
