#pragma once

#include "capture/gstreamer/CameraSource.h"

#include <kestrelid/Image.h>

namespace kestrelid::capture {

// A picture as a camera: 30 frames/s in which it sways a little, and stills of its full size.
class PictureSource final : public CameraSource {
public:
    // picture: its rows are shown as they stand. Nothing if there is not enough memory.
    [[nodiscard]] static std::shared_ptr<const PictureSource> make(const Bitmap& picture);

    PictureSource(Bitmap picture, Bitmap live);

    const std::vector<VideoFormat>& formats() const override { return formats_; }
    bool isFile() const override { return true; }
    Assembled assemble(const VideoFormat& format) const override;
    std::optional<Bitmap> fixedStill() const override { return picture_; }

private:
    Bitmap picture_;
    Bitmap live_;  // BGRA8, as large as frames
    std::vector<VideoFormat> formats_;
};

}  // namespace kestrelid::capture
