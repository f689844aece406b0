#pragma once

#include <cstdint>
#include <gst/video/video.h>
#include <memory>
#include <string>
#include <vector>

namespace kestrelid::testcamera {

// Paints the frames of one format: colour bars or a picture, with a mark that moves by the frame.
class FramePainter {
public:
    // picture: a PNG or JPEG file, shown whole on black; empty: colour bars.
    FramePainter(const GstVideoInfo& format, const std::string& picture);
    ~FramePainter();

    // Null where no memory is left.
    GstBuffer* paint(std::uint64_t number);

private:
    GstBuffer* compress();

    GstVideoInfo format_;
    bool showsPicture_;
    GstVideoInfo planar_;  // I420
    std::vector<std::uint8_t> background_;
    GstBuffer* canvas_ = nullptr;
    GstVideoConverter* converter_ = nullptr;
    void* compressor_ = nullptr;
};

}  // namespace kestrelid::testcamera
