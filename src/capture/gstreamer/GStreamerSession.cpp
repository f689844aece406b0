#include "capture/gstreamer/GStreamerSession.h"

#include <chrono>
#include <exception>
#include <utility>

namespace kestrelid::capture {

GStreamerSession::GStreamerSession(const Patience& patience, OpenControlNodes openControls)
    : patience_(patience), openControls_(std::move(openControls)),
      delivery_(std::make_shared<FrameDelivery>()), board_(std::make_shared<StatusBoard>()),
      engine_(std::make_shared<SessionEngine>(delivery_, board_, patience_, openControls_)) {}

GStreamerSession::~GStreamerSession() {
    // Most devices are let go in time for the host to use them at once.
    constexpr std::chrono::milliseconds kPatience{15};
    const auto limit = SessionEngine::Clock::now() + kPatience;
    engine_->requestStop();
    board_->close(limit);
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
        photoOutput_->attach(engine_.get());
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
    return board_->status();
}

void GStreamerSession::observeStatus(std::function<void()> observer) {
    board_->observe(std::move(observer));
}

bool GStreamerSession::replaceInput(std::shared_ptr<CaptureInput> input) try {
    const auto own = std::dynamic_pointer_cast<GStreamerInput>(input);
    if (!own || configurations_ > 0)
        return false;
    if (engine_->keeps(*own))
        return true;
    // Not the present one, whose thread may hang in its driver for as long as that likes.
    const auto engine =
        std::make_shared<SessionEngine>(delivery_, board_, patience_, openControls_);
    const auto former = engine_.replace(engine);
    former->requestStop();
    if (photoOutput_) {
        photoOutput_->detach("another camera was chosen");
        photoOutput_->attach(engine);
    }
    // Some devices allow only one of them to run.
    former->finish(SessionEngine::Clock::now() + patience_.finish);
    delivery_->deliverBlank();
    engine->takeOver(own);
    engine->start();
    return true;
} catch (const std::exception&) {
    return false;  // no memory for another engine
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
