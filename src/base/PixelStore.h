#pragma once

#include <kestrelid/Bitmap.h>
#include <kestrelid/Image.h>

#include <cstddef>
#include <memory>

namespace kestrelid::base {

// Memory for the pixels of one picture, not initialised,
// that a decoder fills before a Bitmap shows it.
class PixelStore {
public:
    // Sizes are positive. bytesPerPixel: as the decoder writes them; up to 4. Throws
    // std::bad_alloc.
    PixelStore(int width, int height, int bytesPerPixel);

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] std::ptrdiff_t stride() const { return stride_; }
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(stride_) * height_; }
    [[nodiscard]] std::byte* row(int y) const { return pixels_.get() + y * stride_; }
    [[nodiscard]] unsigned char* bytes(int y = 0) const {
        return reinterpret_cast<unsigned char*>(row(y));
    }

    // A pixel of format takes at most bytesPerPixel bytes; the stride stays.
    [[nodiscard]] Image toImage(PixelFormat format, Orientation orientation) &&;

private:
    int width_;
    int height_;
    std::ptrdiff_t stride_;
    std::shared_ptr<std::byte[]> pixels_;
};

}  // namespace kestrelid::base
