#pragma once

#include "imagefile/FileContents.h"

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace kestrelid::imagefile {

// Throws std::bad_alloc.
[[nodiscard]] ImageResult decodeJpeg(std::span<const std::byte> file, const DecodeOptions& options);

// Rows as they stand. quality: percent. Throws std::bad_alloc.
[[nodiscard]] FileBytes encodeJpeg(const Bitmap& bitmap, int quality = 90);

// Decodes the pictures of a motion JPEG, one after another, into memory of the caller. They may
// leave out the usual Huffman tables.
class JpegFrameDecoder {
public:
    JpegFrameDecoder();  // throws std::bad_alloc
    JpegFrameDecoder(const JpegFrameDecoder&) = delete;
    JpegFrameDecoder& operator=(const JpegFrameDecoder&) = delete;
    ~JpegFrameDecoder();

    // Reads the header of a picture, which must stay until decode(). False: there is none, or it is
    // larger than any picture may be. sufficientSide: as in DecodeOptions.
    [[nodiscard]] bool open(std::span<const std::byte> picture, int sufficientSide);

    // Pixels that decode() writes: of the picture, or of its half, quarter or eighth.
    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }

    // Writes bgra8 or gray8. False: the picture is cut off or damaged; cause() tells.
    [[nodiscard]] bool decode(std::byte* pixels, std::ptrdiff_t stride, PixelFormat format);
    [[nodiscard]] const std::string& cause() const { return cause_; }

private:
    struct Handle;
    const std::unique_ptr<Handle> handle_;
    std::span<const std::byte> picture_;
    int width_ = 0;
    int height_ = 0;
    std::string cause_;
};

}  // namespace kestrelid::imagefile
