#include "platform/capture/gstreamer/GStreamerCapturePlatform.h"

#include "platform/capture/CameraFile.h"
#include "platform/capture/gstreamer/FileCamera.h"
#include "platform/capture/gstreamer/GStreamerLibrary.h"
#include "platform/capture/gstreamer/GStreamerSession.h"

#include <algorithm>
#include <utility>

namespace kestrelid {

namespace {

// One for each size and encoding, with its greatest rate; largest first.
std::vector<CameraFormat> cameraFormats(const std::vector<VideoFormat>& formats) {
    std::vector<CameraFormat> all;
    for (const VideoFormat& format : formats) {
        const char* encoding = format.encoding == Encoding::jpeg ? "jpeg" : "raw";
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

}  // namespace

GStreamerCapturePlatform::GStreamerCapturePlatform(CameraOptions options)
    : options_(std::move(options)) {}

GStreamerCapturePlatform::~GStreamerCapturePlatform() = default;

std::shared_ptr<CaptureSession> GStreamerCapturePlatform::makeSession() {
    return std::make_shared<GStreamerSession>();
}

std::shared_ptr<PhotoOutput> GStreamerCapturePlatform::makePhotoOutput() {
    return std::make_shared<GStreamerPhotoOutput>();
}

std::shared_ptr<VideoDataOutput> GStreamerCapturePlatform::makeVideoDataOutput() {
    return std::make_shared<GStreamerVideoOutput>();
}

std::shared_ptr<CaptureDevice> GStreamerCapturePlatform::defaultVideoDevice() {
    if (!startGStreamer())
        return nullptr;
    if (const auto file = cameraFile(options_)) {
        const Mounting mounting{.orientation = options_.orientation.value_or(Orientation::up),
                                .isMirrored = options_.isMirrored.value_or(false)};
        return std::make_shared<GStreamerDevice>(file->filename().string(), mounting,
                                                 [file = *file] { return openCameraFile(file); });
    }
    return nullptr;
}

std::vector<CameraDescription> GStreamerCapturePlatform::cameras() {
    const auto file = cameraFile(options_);
    if (!file)
        return {};
    const auto opened = openCameraFile(*file);
    const auto* source = std::get_if<std::shared_ptr<const CameraSource>>(&opened);
    if (!source)
        return {};
    return {{.name = file->filename().string(), .formats = cameraFormats((*source)->formats())}};
}

std::vector<ServiceStatus> GStreamerCapturePlatform::diagnose() {
    std::vector<ServiceStatus> all = diagnoseGStreamer();
    if (const auto file = cameraFile(options_)) {
        const auto opened = openCameraFile(*file);
        const auto* error = std::get_if<CaptureError>(&opened);
        all.push_back({.name = "camera file " + file->filename().string(),
                       .available = !error,
                       .details = error ? error->description : "can be played"});
    }
    return all;
}

std::variant<std::shared_ptr<CaptureInput>, CaptureError>
GStreamerCapturePlatform::makeInput(std::shared_ptr<CaptureDevice> device) {
    const auto own = std::dynamic_pointer_cast<GStreamerDevice>(device);
    if (!own)
        return CaptureError{"not a camera of this platform"};
    auto opened = own->open();
    if (auto* error = std::get_if<CaptureError>(&opened))
        return *std::move(error);
    return std::make_shared<GStreamerInput>(
        std::get<std::shared_ptr<const CameraSource>>(std::move(opened)), own->mounting());
}

}  // namespace kestrelid
