#include <kestrelid/Bitmap.h>

#include <algorithm>
#include <utility>

namespace kestrelid {

Bitmap::Bitmap(int width, int height, std::ptrdiff_t stride, PixelFormat format,
               std::shared_ptr<const std::byte[]> pixels, const std::byte* origin)
    : width_(width), height_(height), stride_(stride), format_(format), pixels_(std::move(pixels)),
      origin_(origin) {}

std::optional<Bitmap> Bitmap::wrap(int width, int height, std::ptrdiff_t stride, PixelFormat format,
                                   std::shared_ptr<const std::byte[]> pixels, std::size_t size) {
    if (width <= 0 || height <= 0 || !pixels)
        return std::nullopt;
    const auto rowBytes = static_cast<std::int64_t>(width) * bytesPerPixel(format);
    if (stride < rowBytes || size < static_cast<std::uint64_t>(rowBytes))
        return std::nullopt;
    // Divided, because stride * (height - 1) can overflow; the last row needs no padding.
    const std::size_t strides =
        (size - static_cast<std::size_t>(rowBytes)) / static_cast<std::size_t>(stride);
    if (strides < static_cast<std::size_t>(height) - 1)
        return std::nullopt;
    const std::byte* origin = pixels.get();
    return Bitmap(width, height, stride, format, std::move(pixels), origin);
}

std::optional<Bitmap> Bitmap::crop(const PixelRect& region) const {
    // 64 bits: x + width of a region may lie outside int.
    const auto end = [](int start, int length) { return std::int64_t{start} + length; };
    const int left = std::max(region.x, 0);
    const int top = std::max(region.y, 0);
    const auto right = std::min<std::int64_t>(end(region.x, region.width), width_);
    const auto bottom = std::min<std::int64_t>(end(region.y, region.height), height_);
    if (left >= right || top >= bottom)
        return std::nullopt;
    return Bitmap(static_cast<int>(right - left), static_cast<int>(bottom - top), stride_, format_,
                  pixels_, row(top) + std::ptrdiff_t{left} * bytesPerPixel(format_));
}

}  // namespace kestrelid
