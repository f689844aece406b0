#include "tests/capture/CaptureRig.h"

#include "base/AsioQueue.h"

#include <chrono>
#include <thread>
#include <utility>

namespace kestrelid::test {
namespace {

struct PhotoListener final : PhotoCaptureDelegate {
    PhotoListener(std::shared_ptr<PhotoAnswers> given, int index)
        : answers(std::move(given)), number(index) {}
    void didFinishProcessingPhoto(const CapturedPhoto& photo,
                                  const std::optional<CaptureError>& error) override {
        if (answers->onAnswer)
            answers->onAnswer();
        const std::lock_guard lock(answers->mutex);
        answers->log.push_back(
            {.number = number,
             .file = photo.fileDataRepresentation.value_or(std::vector<std::byte>{}),
             .error = error ? error->description : std::string()});
    }

    const std::shared_ptr<PhotoAnswers> answers;
    const int number;
};

}  // namespace

bool eventually(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return condition();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

CameraOptions cameraNamed(const std::string& name) {
    CameraOptions options;
    options.camera = name;
    return options;
}

void ShownFrames::show(const Bitmap& frame, Orientation frameOrientation, bool frameIsMirrored) {
    {
        const std::lock_guard lock(mutex_);
        last_ = frame;
    }
    orientation = frameOrientation;
    isMirrored = frameIsMirrored;
    ++count_;
    if (onFrame)
        onFrame();
}

Bitmap ShownFrames::last() const {
    const std::lock_guard lock(mutex_);
    return last_.value();
}

void TakenFrames::didOutput(const SampleBuffer& sampleBuffer) {
    const PixelBuffer* pixels = sampleBuffer.imageBuffer();
    if (auto bitmap = pixels ? pixels->render() : std::nullopt; bitmap && count_ < keeps)
        kept_.push_back(*std::move(bitmap));
    ++count_;
    if (onFrame)
        onFrame();
}

CaptureRig::CaptureRig(const CameraOptions& options, const capture::Patience& patience,
                       capture::OpenControlNodes openControls)
    : platform(std::make_shared<capture::GStreamerCapturePlatform>(
          options, capture::OpenCameraRemote(), patience, std::move(openControls))),
      session(platform->makeSession()), photoOutput(platform->makePhotoOutput()),
      videoOutput(platform->makeVideoDataOutput()) {
    videoOutput->setSampleBufferDelegate(taken,
                                         std::make_shared<base::AsioQueue>("test.frames", 1));
    session->addPreviewSurface(shown);
}

std::string CaptureRig::start() {
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
    if (!takesInput)
        return "input refused";
    session->startRunning();
    return "";
}

void CaptureRig::takePhotos(int number, const PhotoSettings& settings) {
    for (int index = 0; index < number; ++index)
        photoOutput->capturePhoto(settings, std::make_shared<PhotoListener>(answers, index));
}

PhotoAnswers::Log CaptureRig::photos(std::size_t number) const {
    PhotoAnswers::Log log;
    eventually([&] {
        const std::lock_guard lock(answers->mutex);
        log = answers->log;
        return log.size() >= number;
    });
    return log;
}

}  // namespace kestrelid::test
