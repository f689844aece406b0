#pragma once

#include "capture/gstreamer/CameraSource.h"

#include <filesystem>
#include <string>
#include <variant>

namespace kestrelid::capture {

// A video file as a camera: in its own time, over and over.
class VideoFileSource final : public CameraSource {
public:
    using Opened = std::variant<std::shared_ptr<const CameraSource>, CaptureError>;

    // Decodes the first frame to learn its size.
    [[nodiscard]] static Opened open(const std::filesystem::path& path);

    VideoFileSource(std::string uri, VideoFormat format);

    const std::vector<VideoFormat>& formats() const override { return formats_; }
    bool isFile() const override { return true; }
    Assembled assemble(const VideoFormat& format) const override;

private:
    std::string uri_;
    std::vector<VideoFormat> formats_;
};

}  // namespace kestrelid::capture
