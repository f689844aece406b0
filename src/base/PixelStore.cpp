#include "base/PixelStore.h"

#include "base/LargeMemory.h"

#include <cstdlib>
#include <utility>

namespace kestrelid::base {

PixelStore::PixelStore(int width, int height, int bytesPerPixel)
    : width_(width), height_(height), stride_(std::ptrdiff_t{width} * bytesPerPixel),
      pixels_(static_cast<std::byte*>(allocateLarge(size())), std::free) {}

Image PixelStore::toImage(PixelFormat format, Orientation orientation) && {
    const std::size_t held = size();
    return Image(Bitmap::wrap(width_, height_, stride_, format, std::move(pixels_), held).value(),
                 orientation);
}

}  // namespace kestrelid::base
