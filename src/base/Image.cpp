#include <kestrelid/Image.h>

#include "base/PixelStore.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace kestrelid {
namespace {

// Reading the stored rows in the order in which they are shown: the first byte, and the bytes from
// one shown pixel to the next along a shown row and down a shown column.
struct Walk {
    const std::byte* start;
    std::ptrdiff_t along;
    std::ptrdiff_t down;
};

bool isTurned(Orientation orientation) {
    return orientation >= Orientation::leftMirrored;
}

Walk walkOf(const Bitmap& stored, Orientation orientation) {
    const bool turned = isTurned(orientation);
    const bool fromRight =
        orientation == Orientation::upMirrored || orientation == Orientation::down ||
        orientation == Orientation::rightMirrored || orientation == Orientation::left;
    const bool fromBottom =
        orientation == Orientation::down || orientation == Orientation::downMirrored ||
        orientation == Orientation::right || orientation == Orientation::rightMirrored;
    const std::ptrdiff_t pixel = bytesPerPixel(stored.format());
    const std::ptrdiff_t across = fromRight ? -pixel : pixel;
    const std::ptrdiff_t downwards = fromBottom ? -stored.stride() : stored.stride();
    return {stored.row(fromBottom ? stored.height() - 1 : 0) +
                (fromRight ? stored.width() - 1 : 0) * pixel,
            turned ? downwards : across, turned ? across : downwards};
}

template <int kPixelBytes>
void copyBlock(const Walk& walk, const base::PixelStore& shown, const PixelRect& block) {
    for (int y = block.y; y < block.y + block.height; ++y) {
        const std::byte* from = walk.start + y * walk.down + block.x * walk.along;
        std::byte* to = shown.row(y) + std::ptrdiff_t{block.x} * kPixelBytes;
        for (int x = 0; x < block.width; ++x, from += walk.along, to += kPixelBytes)
            std::memcpy(to, from, kPixelBytes);
    }
}

// In square blocks: a quarter turn reads down columns,
// and whole columns would miss the cache at every pixel.
template <int kPixelBytes>
void copyShown(const Walk& walk, const base::PixelStore& shown) {
    constexpr int kBlock = 64;
    for (int y = 0; y < shown.height(); y += kBlock) {
        for (int x = 0; x < shown.width(); x += kBlock) {
            copyBlock<kPixelBytes>(
                walk, shown,
                {x, y, std::min(kBlock, shown.width() - x), std::min(kBlock, shown.height() - y)});
        }
    }
}

Image uprightCopy(const Bitmap& stored, Orientation orientation) {
    const bool turned = isTurned(orientation);
    base::PixelStore shown(turned ? stored.height() : stored.width(),
                           turned ? stored.width() : stored.height(),
                           bytesPerPixel(stored.format()));
    const Walk walk = walkOf(stored, orientation);
    switch (stored.format()) {
    case PixelFormat::bgra8:
    case PixelFormat::rgba8:
        copyShown<4>(walk, shown);
        break;
    case PixelFormat::rgb8:
    case PixelFormat::bgr8:
        copyShown<3>(walk, shown);
        break;
    case PixelFormat::gray8:
        copyShown<1>(walk, shown);
        break;
    }
    return std::move(shown).toImage(stored.format(), Orientation::up);
}

}  // namespace

Image::Image(Bitmap bitmap, Orientation orientation)
    : bitmap_(std::move(bitmap)), orientation_(orientation) {}

Image Image::upright() const {
    if (!bitmap_)
        return {};
    if (orientation_ == Orientation::up)
        return *this;
    try {
        return uprightCopy(*bitmap_, orientation_);
    } catch (const std::bad_alloc&) {
        return {};  // callers have to handle an image without a bitmap anyway
    }
}

}  // namespace kestrelid
