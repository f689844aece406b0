#pragma once

#include "capture/gstreamer/CameraSource.h"

#include <filesystem>
#include <string>

namespace kestrelid::capture {

// A video file as a camera: in its own time, over and over.
class VideoFileSource final : public CameraSource {
public:
    // Decodes the first frame to learn its size.
    [[nodiscard]] static OpenedSource open(const std::filesystem::path& path);

    VideoFileSource(std::string uri, VideoFormat format);

    const std::vector<VideoFormat>& formats() const override { return formats_; }
    bool isFile() const override { return true; }
    Assembled assemble(const VideoFormat& format) const override;

private:
    std::string uri_;
    std::vector<VideoFormat> formats_;
};

}  // namespace kestrelid::capture
