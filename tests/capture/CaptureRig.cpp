#include "tests/capture/CaptureRig.h"

#include "base/AsioQueue.h"

#include <algorithm>
#include <utility>

namespace kestrelid::test {

bool eventually(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds kPause{2};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return condition();
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

CameraOptions cameraNamed(const std::string& name) {
    CameraOptions options;
    options.camera = name;
    return options;
}

PhotoSettings boundedBy(int width, int height) {
    PhotoSettings settings;
    settings.maxPhotoDimensions = {.width = width, .height = height};
    return settings;
}

void ShownFrames::show(const Bitmap& frame, Orientation frameOrientation, bool frameIsMirrored) {
    {
        const std::lock_guard lock(mutex_);
        const auto now = std::chrono::steady_clock::now();
        if (count_++ > 0)
            longestGap_ = std::max(longestGap_, now - lastTime_);
        lastTime_ = now;
        last_ = frame;
        orientation = frameOrientation;
        isMirrored = frameIsMirrored;
    }
    if (onFrame)
        onFrame(frame);
}

int ShownFrames::count() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

std::optional<Bitmap> ShownFrames::last() const {
    const std::lock_guard lock(mutex_);
    return last_;
}

std::chrono::steady_clock::duration ShownFrames::longestGap() const {
    const std::lock_guard lock(mutex_);
    return longestGap_;
}

void TakenFrames::didOutput(const SampleBuffer& sampleBuffer) {
    const PixelBuffer* pixels = sampleBuffer.imageBuffer();
    std::optional<Bitmap> bitmap = pixels ? pixels->render() : std::nullopt;
    {
        const std::lock_guard lock(mutex_);
        ++count_;
        if (!bitmap)
            ++unrendered_;
        else if (kept_.size() < keeps)
            kept_.push_back(*std::move(bitmap));
    }
    if (onFrame)
        onFrame();
}

int TakenFrames::count() const {
    const std::lock_guard lock(mutex_);
    return count_;
}

int TakenFrames::unrendered() const {
    const std::lock_guard lock(mutex_);
    return unrendered_;
}

std::vector<Bitmap> TakenFrames::kept() const {
    const std::lock_guard lock(mutex_);
    return kept_;
}

void TakenFrames::letGo() {
    const std::lock_guard lock(mutex_);
    kept_.clear();
}

PhotoAnswers::Log PhotoAnswers::Shared::answers() const {
    const std::lock_guard lock(mutex);
    return log;
}

void PhotoAnswers::didFinishProcessingPhoto(const CapturedPhoto& photo,
                                            const std::optional<CaptureError>& error) {
    const std::lock_guard lock(shared_->mutex);
    shared_->log.push_back({.number = number_,
                            .file = photo.fileDataRepresentation.value_or(std::vector<std::byte>{}),
                            .error = error ? error->description : std::string(),
                            .time = std::chrono::steady_clock::now()});
}

CaptureRig::CaptureRig(const CameraOptions& options)
    : platform(std::make_shared<capture::GStreamerCapturePlatform>(options)),
      session(platform->makeSession()), photoOutput(platform->makePhotoOutput()),
      videoOutput(platform->makeVideoDataOutput()) {
    videoOutput->setSampleBufferDelegate(taken,
                                         std::make_shared<base::AsioQueue>("test.frames", 1));
    session->addPreviewSurface(shown);
}

std::string CaptureRig::addCamera() {
    const auto device = platform->defaultVideoDevice();
    if (!device)
        return "no camera";
    const auto opened = platform->makeInput(device);
    if (const auto* error = std::get_if<CaptureError>(&opened))
        return error->description.empty() ? "no cause" : error->description;
    const auto& input = std::get<std::shared_ptr<CaptureInput>>(opened);
    session->beginConfiguration();
    session->setSessionPreset(SessionPreset::photo);
    const bool takesInput = session->canAddInput(input);
    session->addInput(input);
    if (session->canAddOutput(photoOutput))
        session->addOutput(photoOutput);
    if (session->canAddOutput(videoOutput))
        session->addOutput(videoOutput);
    session->commitConfiguration();
    return takesInput ? "" : "input refused";
}

std::string CaptureRig::start() {
    std::string error = addCamera();
    if (error.empty())
        session->startRunning();
    return error;
}

void CaptureRig::takePhotos(int number, const PhotoSettings& settings) {
    for (int index = 0; index < number; ++index)
        photoOutput->capturePhoto(settings, std::make_shared<PhotoAnswers>(answers, index));
}

PhotoAnswers::Log CaptureRig::photos(std::size_t number) const {
    eventually([&] { return answers->answers().size() >= number; });
    return answers->answers();
}

}  // namespace kestrelid::test
