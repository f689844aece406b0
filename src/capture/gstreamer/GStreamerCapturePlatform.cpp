#include "capture/gstreamer/GStreamerCapturePlatform.h"

#include "base/Failures.h"
#include "capture/CameraFile.h"
#include "capture/gstreamer/DeviceSource.h"
#include "capture/gstreamer/FileCamera.h"
#include "capture/gstreamer/GStreamerLibrary.h"
#include "capture/gstreamer/GStreamerSession.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace kestrelid::capture {

namespace {

const char* nameOf(Encoding encoding) {
    switch (encoding) {
    case Encoding::jpeg:
        return "jpeg";
    case Encoding::h264:
        return "h264";
    case Encoding::raw:
        break;
    }
    return "raw";
}

// One for each size and encoding, with its greatest rate; largest first.
std::vector<CameraFormat> cameraFormats(const std::vector<VideoFormat>& formats) {
    std::vector<CameraFormat> all;
    for (const VideoFormat& format : formats) {
        const char* encoding = nameOf(format.encoding);
        const auto same = std::find_if(all.begin(), all.end(), [&](const CameraFormat& one) {
            return one.width == format.width && one.height == format.height &&
                   one.encoding == encoding;
        });
        if (same != all.end())
            same->framesPerSecond = std::max(same->framesPerSecond, format.rate.perSecond());
        else
            all.push_back({.width = format.width,
                           .height = format.height,
                           .framesPerSecond = format.rate.perSecond(),
                           .encoding = encoding});
    }
    std::stable_sort(all.begin(), all.end(), [](const CameraFormat& a, const CameraFormat& b) {
        return std::int64_t{a.width} * a.height > std::int64_t{b.width} * b.height;
    });
    return all;
}

CameraDescription describe(const FoundCamera& camera) {
    return {.name = camera.name,
            .formats = cameraFormats(camera.source->formats()),
            .position = camera.position,
            .isInfrared = camera.isInfrared,
            .obstacle = camera.obstacle};
}

std::shared_ptr<CaptureDevice> deviceOf(const FoundCamera& camera, const Mounting& mounting) {
    return std::make_shared<GStreamerDevice>(
        camera.name, camera.name, mounting,
        [source = camera.source, obstacle = camera.obstacle]() -> OpenedSource {
            if (!obstacle.empty())
                return tl::unexpected(CaptureError{obstacle});
            return source;
        });
}

std::vector<FoundCamera> camerasOf(const std::shared_ptr<DeviceWatch>& watch) {
    return watch ? findCameras(watch) : std::vector<FoundCamera>{};
}

}  // namespace

struct GStreamerCapturePlatform::Observer {
    std::function<void()> tell;
    std::shared_ptr<const void> watched{};  // with the platform's lock
    std::shared_ptr<const void> remotelyWatched{};
};

GStreamerCapturePlatform::GStreamerCapturePlatform(CameraOptions options,
                                                   OpenCameraRemote openRemote,
                                                   const Patience& patience,
                                                   OpenControlNodes openControls)
    : options_(std::move(options)), openRemote_(std::move(openRemote)), patience_(patience),
      openControls_(std::move(openControls)) {}

GStreamerCapturePlatform::~GStreamerCapturePlatform() = default;

std::shared_ptr<CaptureSession> GStreamerCapturePlatform::makeSession() {
    return std::make_shared<GStreamerSession>(patience_, openControls_);
}

std::shared_ptr<PhotoOutput> GStreamerCapturePlatform::makePhotoOutput() {
    return std::make_shared<GStreamerPhotoOutput>(patience_.photo);
}

std::shared_ptr<VideoDataOutput> GStreamerCapturePlatform::makeVideoDataOutput() {
    return std::make_shared<GStreamerVideoOutput>();
}

std::vector<FoundCamera> GStreamerCapturePlatform::find() {
    if (!startGStreamer())
        return {};
    const std::lock_guard lock(mutex_);
    if (!watch_ || !watch_->isWhole()) {
        watch_ = DeviceWatch::start();
        attendAll();
    }
    std::vector<FoundCamera> found = camerasOf(watch_);
    // The watch keeps the first connection to PipeWire, even a failed one, also when PipeWire has
    // started again; inside a sandbox it has none.
    if (found.empty() && openRemote_ && (!watch_ || watch_->isWhole())) {
        const auto remote = DeviceWatch::ofRemote(openRemote_);
        if (std::exchange(remoteWatch_, remote) != remote)
            attendAll();
        found = camerasOf(remote);
    }
    return found;
}

void GStreamerCapturePlatform::attend(Observer& observer) const {
    observer.watched = watch_ ? watch_->watchAll(observer.tell) : nullptr;
    observer.remotelyWatched = remoteWatch_ ? remoteWatch_->watchAll(observer.tell) : nullptr;
}

void GStreamerCapturePlatform::attendAll() {
    std::erase_if(observers_, [](const auto& observer) { return observer.expired(); });
    for (const auto& weak : observers_) {
        if (const auto observer = weak.lock())
            attend(*observer);
    }
}

std::shared_ptr<const void>
GStreamerCapturePlatform::observeCameras(std::function<void()> observer) try {
    const auto kept = std::make_shared<Observer>(Observer{.tell = std::move(observer)});
    if (cameraFile(options_))
        return kept;
    (void)find();  // so that there is something to follow
    const std::lock_guard lock(mutex_);
    attend(*kept);
    observers_.push_back(kept);
    return kept;
} catch (const std::exception&) {
    return nullptr;  // no memory to follow them
}

Mounting GStreamerCapturePlatform::mounting(const Mounting& known) const {
    return {.orientation = options_.orientation.value_or(known.orientation),
            .isMirrored = options_.isMirrored.value_or(known.isMirrored)};
}

// The one that the options choose; null if it is not there.
const FoundCamera* GStreamerCapturePlatform::ownAmong(const std::vector<FoundCamera>& found) const {
    const auto own = std::find_if(found.begin(), found.end(), [&](const FoundCamera& camera) {
        return (options_.camera.empty() ? camera.obstacle.empty()
                                        : options_.camera == camera.name) &&
               (!options_.position || options_.position == camera.position);
    });
    return own != found.end() ? &*own : nullptr;
}

std::shared_ptr<CaptureDevice> GStreamerCapturePlatform::defaultVideoDevice() try {
    if (const auto file = cameraFile(options_))
        return std::make_shared<GStreamerDevice>(file->string(), file->filename().string(),
                                                 mounting({}),
                                                 [file = *file] { return openCameraFile(file); });
    const std::vector<FoundCamera> found = find();
    const FoundCamera* own = ownAmong(found);
    if (!own)
        return nullptr;
    const std::lock_guard lock(mutex_);
    ownCamera_ = own->name;
    return deviceOf(*own, mounting(own->mounting));
} catch (const std::exception&) {
    return nullptr;  // no memory to look for one
}

std::shared_ptr<CaptureDevice> GStreamerCapturePlatform::videoDevice(const std::string& name) try {
    if (cameraFile(options_))
        return CapturePlatform::videoDevice(name);
    const std::vector<FoundCamera> found = find();
    const auto named = std::find_if(found.begin(), found.end(),
                                    [&](const auto& camera) { return camera.name == name; });
    if (named == found.end())
        return nullptr;
    const std::lock_guard lock(mutex_);
    // The first one is another as soon as a better one is plugged in.
    const bool isOwn = ownCamera_.empty() ? &*named == ownAmong(found) : ownCamera_ == name;
    return deviceOf(*named, isOwn ? mounting(named->mounting) : named->mounting);
} catch (const std::exception&) {
    return nullptr;  // no memory to look for it
}

std::vector<CameraDescription> GStreamerCapturePlatform::cameras() try {
    std::vector<CameraDescription> all;
    if (const auto file = cameraFile(options_)) {
        std::unique_lock lock(mutex_);
        if (!fileFormats_) {
            lock.unlock();
            const auto opened = openCameraFile(*file);
            if (!opened)
                return all;
            lock.lock();
            fileFormats_ = (*opened)->formats();
        }
        all.push_back({.name = file->filename().string(), .formats = cameraFormats(*fileFormats_)});
        return all;
    }
    for (const FoundCamera& camera : find())
        all.push_back(describe(camera));
    return all;
} catch (const std::exception&) {
    return {};  // no memory to look for them
}

std::vector<ServiceStatus> GStreamerCapturePlatform::diagnose() {
    std::vector<ServiceStatus> all = diagnoseGStreamer();
    if (const auto file = cameraFile(options_)) {
        const auto opened = openCameraFile(*file);
        all.push_back({.name = "camera file " + file->filename().string(),
                       .available = opened.has_value(),
                       .details = opened ? "can be played" : opened.error().description});
        return all;
    }
    const std::vector<CameraDescription> found = cameras();
    for (const CameraDescription& camera : found)
        all.push_back({.name = "camera " + camera.name,
                       .available = camera.obstacle.empty(),
                       .details = camera.obstacle.empty()
                                      ? std::to_string(camera.formats.size()) + " formats"
                                      : camera.obstacle});
    const bool isMissing = !options_.camera.empty() &&
                           std::none_of(found.begin(), found.end(), [&](const auto& camera) {
                               return camera.name == options_.camera;
                           });
    if (isMissing)
        all.push_back({.name = "camera " + options_.camera,
                       .available = false,
                       .details = "no camera and no file of that name"});
    else if (found.empty())
        all.push_back({.name = "camera", .available = false, .details = "none found"});
    return all;
}

std::variant<std::shared_ptr<CaptureInput>, CaptureError>
GStreamerCapturePlatform::makeInput(std::shared_ptr<CaptureDevice> device) {
    const auto own = std::dynamic_pointer_cast<GStreamerDevice>(device);
    if (!own)
        return CaptureError{"not a camera of this platform"};
    try {
        auto opened = own->open();
        if (!opened)
            return opened.error();
        if ((*opened)->isFile()) {
            const std::lock_guard lock(mutex_);
            fileFormats_ = (*opened)->formats();
        }
        return std::make_shared<GStreamerInput>(*std::move(opened), own->mounting(), own->id());
    } catch (const std::exception&) {
        return CaptureError{base::kOutOfMemory};
    }
}

}  // namespace kestrelid::capture
