#include <kestrelid/CameraManager.h>

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <variant>

namespace kestrelid {

namespace {

constexpr std::chrono::duration<double> kReadinessCheckDelay{1.0};
constexpr std::int64_t kVerdictsToAppear = 1;     // in a row
constexpr std::int64_t kVerdictsToDisappear = 2;  // in a row: a single blurred frame is no absence

// Earlier than any clock, so that the first frame is always judged: 0001-01-01.
constexpr WallTime kDistantPast{std::chrono::duration<double>(-62135596800.0)};

WallTime systemTime() {
    return std::chrono::system_clock::now();
}

CameraServices withClock(CameraServices services) {
    if (!services.now)
        services.now = systemTime;
    return services;
}

void countUp(std::int64_t& run) {
    if (__builtin_add_overflow(run, 1, &run))
        std::abort();
}

bool contains(const auto& list, const auto& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

PhotoSettings settingsFor(const PhotoOutput& output) {
    PhotoSettings settings;
    const std::vector<std::string> codecs = output.availablePhotoCodecTypes();
    for (const char* codec : {kPhotoCodecHevc, kPhotoCodecJpeg}) {
        if (contains(codecs, codec)) {
            settings.codec = codec;
            break;
        }
    }
    if (contains(output.supportedFlashModes(), FlashMode::off))
        settings.flashMode = FlashMode::off;
    settings.maxPhotoDimensions = output.maxPhotoDimensions();
    return settings;
}

}  // namespace

std::shared_ptr<CameraManager> CameraManager::create(CameraServices services) {
    if (!services.authorization || !services.capture || !services.detector || !services.mainQueue ||
        !services.makeSerialQueue)
        return nullptr;
    return std::shared_ptr<CameraManager>(new CameraManager(withClock(std::move(services))));
}

CameraManager::CameraManager(CameraServices services)
    : services_(std::move(services)), session_(services_.capture->makeSession()),
      photoOutput_(services_.capture->makePhotoOutput()),
      videoOutput_(services_.capture->makeVideoDataOutput()),
      sessionQueue_(services_.makeSerialQueue("camera.session.queue")),
      lastDetectionTime_(kDistantPast) {}

CameraManager::~CameraManager() = default;

void CameraManager::checkAuthorization() {
    switch (services_.authorization->status()) {
    case AuthorizationStatus::authorized:
        isAuthorized_.publish(true);
        setupSession();
        break;
    case AuthorizationStatus::notDetermined:
        services_.authorization->requestAccess([self = shared_from_this()](bool granted) {
            self->services_.mainQueue->async([self, granted] {
                self->isAuthorized_.publish(granted);
                if (granted)
                    self->setupSession();
            });
        });
        break;
    case AuthorizationStatus::restricted:
    case AuthorizationStatus::denied:
        isAuthorized_.publish(false);
        break;
    }
}

void CameraManager::setupSession() {
    sessionQueue_->async([self = shared_from_this()] { self->configureSession(); });
}

void CameraManager::configureSession() {
    session_->beginConfiguration();
    session_->setSessionPreset(SessionPreset::photo);
    if (!addDefaultDevice()) {
        session_->commitConfiguration();
        services_.mainQueue->async(
            [self = shared_from_this()] { self->isSessionReady_.publish(false); });
        return;
    }
    if (session_->canAddOutput(photoOutput_))
        session_->addOutput(photoOutput_);
    if (session_->canAddOutput(videoOutput_))
        addVideoOutput();
    session_->commitConfiguration();
    session_->startRunning();
    services_.mainQueue->asyncAfter(kReadinessCheckDelay, [self = shared_from_this()] {
        self->isSessionReady_.publish(self->session_->isRunning());
    });
}

bool CameraManager::addDefaultDevice() {
    const std::shared_ptr<CaptureDevice> device = services_.capture->defaultVideoDevice();
    if (!device)
        return false;
    const auto opened = services_.capture->makeInput(device);
    const auto* input = std::get_if<std::shared_ptr<CaptureInput>>(&opened);
    if (!input || !session_->canAddInput(*input))
        return false;
    session_->addInput(*input);
    return true;
}

void CameraManager::addVideoOutput() {
    videoOutput_->setVideoSettings({.pixelFormat = kPixelFormat32Bgra});
    videoOutput_->setSampleBufferDelegate(weak_from_this(),
                                          services_.makeSerialQueue("video.frame.queue"));
    session_->addOutput(videoOutput_);
}

void CameraManager::didOutput(const SampleBuffer& sampleBuffer) {
    const WallTime now = services_.now();
    if (now - lastDetectionTime_ < detectionInterval_)
        return;
    lastDetectionTime_ = now;
    const PixelBuffer* pixels = sampleBuffer.imageBuffer();
    if (!pixels)
        return;
    std::optional<Bitmap> bitmap = pixels->render();
    if (!bitmap)
        return;
    services_.detector->validate(
        Image(std::move(*bitmap)),
        [weak = weak_from_this()](const PassportValidationResult& result) {
            std::shared_ptr<CameraManager> self = weak.lock();
            if (!self)
                return;
            const std::shared_ptr<DispatchQueue> mainQueue = self->services_.mainQueue;
            // Moved, so that this worker, which may belong to the manager, does not release it.
            mainQueue->async([self = std::move(self), isPassport = result.isPassport(),
                              confidence = static_cast<float>(result.confidence())] {
                self->handleDetectionResult(isPassport, confidence);
            });
        });
}

void CameraManager::handleDetectionResult(bool isPassport, float confidence) {
    if (isPassport) {
        consecutiveNotDetectedCount_ = 0;
        countUp(consecutiveDetectedCount_);
        if (consecutiveDetectedCount_ >= kVerdictsToAppear && !isDocumentDetected_.value())
            isDocumentDetected_.publish(true);
    } else {
        consecutiveDetectedCount_ = 0;
        countUp(consecutiveNotDetectedCount_);
        if (consecutiveNotDetectedCount_ >= kVerdictsToDisappear && isDocumentDetected_.value())
            isDocumentDetected_.publish(false);
    }
    detectionConfidence_.publish(confidence);
}

void CameraManager::capturePhoto() {
    if (isSessionReady_.value() && session_->isRunning())
        sessionQueue_->async([self = shared_from_this()] { self->performCapture(); });
    else
        deliverLater(std::nullopt);
}

void CameraManager::performCapture() {
    if (!session_->isRunning())
        return deliverLater(std::nullopt);
    const std::vector<CaptureConnection> connections = photoOutput_->connections();
    if (connections.empty() || !connections.front().isEnabled)
        return deliverLater(std::nullopt);
    photoOutput_->capturePhoto(settingsFor(*photoOutput_), shared_from_this());
}

void CameraManager::didFinishProcessingPhoto(const CapturedPhoto& photo,
                                             const std::optional<CaptureError>& error) {
    if (error || !photo.fileDataRepresentation)
        return deliverLater(std::nullopt);
    ImageResult decoded = decodeImage(*photo.fileDataRepresentation);
    if (auto* image = std::get_if<Image>(&decoded))
        deliverLater(std::move(*image));
    else
        deliverLater(std::nullopt);
}

void CameraManager::deliverLater(std::optional<Image> photo) {
    services_.mainQueue->async(
        [self = shared_from_this(), photo = std::move(photo)] { self->deliver(photo); });
}

void CameraManager::deliver(const std::optional<Image>& photo) {
    // A copy: the callback may replace itself.
    if (const auto callback = onPhotoCapture)
        callback(photo);
}

}  // namespace kestrelid
