#pragma once

#include <kestrelid/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace kestrelid {

/// What the bytes of a pixel are.
enum class PixelFormat : std::uint8_t {
    bgra8,  ///< four bytes a pixel: blue, green, red, alpha (ignored)
    rgb8,   ///< three bytes a pixel
    gray8,  ///< one byte a pixel
    bgr8,   ///< three bytes a pixel: blue, green, red
    rgba8,  ///< four bytes a pixel: red, green, blue, alpha (ignored)
};

/// Bytes of one pixel: 4, 3 or 1.
[[nodiscard]] constexpr int bytesPerPixel(PixelFormat format) noexcept {
    switch (format) {
    case PixelFormat::bgra8:
    case PixelFormat::rgba8:
        return 4;
    case PixelFormat::rgb8:
    case PixelFormat::bgr8:
        return 3;
    case PixelFormat::gray8:
        break;
    }
    return 1;
}

/// Whole pixels, origin at the top left, y growing downwards.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// A picture in memory: rows from top to bottom. A Bitmap that exists is valid: width and height
/// are positive and every row lies inside the pixels. Copies and crops share the pixels, which are
/// never changed once a Bitmap shows them. Thread: any.
class KESTRELID_EXPORT Bitmap {
public:
    /// Takes pixels as they stand. stride: bytes from one row to the next. Returns nothing if a
    /// size is not positive, if stride is shorter than a row, or if size bytes do not hold all
    /// rows.
    [[nodiscard]] static std::optional<Bitmap> wrap(int width, int height, std::ptrdiff_t stride,
                                                    PixelFormat format,
                                                    std::shared_ptr<const std::byte[]> pixels,
                                                    std::size_t size);

    [[nodiscard]] int width() const noexcept { return width_; }    ///< pixels
    [[nodiscard]] int height() const noexcept { return height_; }  ///< pixels
    /// Bytes from one row to the next.
    [[nodiscard]] std::ptrdiff_t stride() const noexcept { return stride_; }
    /// How the bytes of a pixel are to be read.
    [[nodiscard]] PixelFormat format() const noexcept { return format_; }

    /// First byte of row y, 0 <= y < height().
    [[nodiscard]] const std::byte* row(int y) const noexcept { return origin_ + y * stride_; }

    /// The part of region inside the bitmap, as a view that copies nothing. Returns nothing if they
    /// do not overlap.
    [[nodiscard]] std::optional<Bitmap> crop(const PixelRect& region) const;

private:
    Bitmap(int width, int height, std::ptrdiff_t stride, PixelFormat format,
           std::shared_ptr<const std::byte[]> pixels, const std::byte* origin);

    int width_;
    int height_;
    std::ptrdiff_t stride_;
    PixelFormat format_;
    std::shared_ptr<const std::byte[]> pixels_;
    const std::byte* origin_;
};

}  // namespace kestrelid
