#include "capture/gstreamer/FileCamera.h"

#include "base/ExitGate.h"
#include "base/Failures.h"
#include "capture/gstreamer/GStreamerLibrary.h"
#include "capture/gstreamer/PictureSource.h"
#include "capture/gstreamer/VideoFileSource.h"
#include "imagefile/ImageFormat.h"

#include <kestrelid/ImageFile.h>

#include <array>
#include <exception>
#include <fstream>

namespace kestrelid::capture {

namespace {

bool isPicture(const std::filesystem::path& path) {
    std::array<char, 64> start{};
    std::ifstream file(path, std::ios::binary);
    file.read(start.data(), start.size());
    const auto read = static_cast<std::size_t>(file.gcount());
    return imagefile::imageFormatOf(std::as_bytes(std::span(start).first(read))) !=
           imagefile::ImageFormat::unknown;
}

OpenedSource openPicture(const std::filesystem::path& path) {
    const ImageResult decoded = readImage(path);
    if (const auto* error = std::get_if<ImageError>(&decoded))
        return tl::unexpected(CaptureError{error->cause});
    const Image upright = std::get<Image>(decoded).upright();
    auto source = upright.bitmap() ? PictureSource::make(*upright.bitmap()) : nullptr;
    if (!source)
        return tl::unexpected(CaptureError{"the picture cannot be scaled"});
    return source;
}

}  // namespace

OpenedSource openCameraFile(const std::filesystem::path& path) noexcept {
    try {
        // A video's plugins are loaded while it is tried, on threads of GStreamer.
        const base::ExitGate::Pass pass;
        if (!pass || !startGStreamer())
            return tl::unexpected(CaptureError{"GStreamer does not start"});
        return isPicture(path) ? openPicture(path) : VideoFileSource::open(path);
    } catch (const std::exception&) {
        return tl::unexpected(CaptureError{base::kOutOfMemory});
    }
}

}  // namespace kestrelid::capture
