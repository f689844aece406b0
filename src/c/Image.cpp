#include "c/Border.h"
#include "c/Handles.h"

#include <kestrelid/Bitmap.h>
#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <utility>
#include <variant>

namespace {

using kestrelid::c::Failure;
using kestrelid::c::guarded;
using kestrelid::c::require;

// prefix: what the cause is said of.
KestrelidImage* upright(const kestrelid::ImageResult& result, const std::string& prefix) {
    if (const auto* error = std::get_if<kestrelid::ImageError>(&result))
        throw Failure{error->isOutOfMemory ? KESTRELID_OUT_OF_MEMORY : KESTRELID_UNREADABLE,
                      prefix + error->cause};
    kestrelid::Image shown = std::get<kestrelid::Image>(result).upright();
    if (!shown.bitmap())
        throw std::bad_alloc();
    return new KestrelidImage{std::move(shown)};
}

void check(bool holds, const char* complaint) {
    if (!holds)
        throw Failure{KESTRELID_INVALID_ARGUMENT, complaint};
}

void checkPixels(const KestrelidPixels& pixels) {
    kestrelid::c::checkStruct(&pixels, pixels.struct_size,
                              offsetof(KestrelidPixels, format) + sizeof(pixels.format),
                              sizeof(KestrelidPixels));
    require(pixels.bytes, "bytes");
    check(pixels.format >= KESTRELID_BGRA8 && pixels.format <= KESTRELID_RGBA8,
          "format is none of KestrelidPixelFormat");
    check(pixels.width > 0 && pixels.height > 0 && pixels.width <= kestrelid::kMaximumSide &&
              pixels.height <= kestrelid::kMaximumSide &&
              std::int64_t{pixels.width} * pixels.height <= kestrelid::kMaximumPixels,
          "width or height is out of range");
    const auto row = static_cast<std::size_t>(pixels.width) *
                     bytesPerPixel(static_cast<kestrelid::PixelFormat>(pixels.format));
    check(pixels.stride >= row, "stride is shorter than a row");
    // Divided, because stride * (height - 1) can overflow; the last row needs no padding.
    check(pixels.size >= row &&
              (pixels.size - row) / pixels.stride >= static_cast<std::size_t>(pixels.height) - 1,
          "size does not hold all rows");
}

// The rows without what stands between them.
kestrelid::Bitmap copy(const KestrelidPixels& pixels) {
    const auto format = static_cast<kestrelid::PixelFormat>(pixels.format);
    const auto row = static_cast<std::size_t>(pixels.width) * bytesPerPixel(format);
    const auto rows = static_cast<std::size_t>(pixels.height);
    const auto own = std::make_shared_for_overwrite<std::byte[]>(row * rows);
    for (std::size_t y = 0; y < rows; ++y)
        std::memcpy(own.get() + y * row,
                    static_cast<const std::byte*>(pixels.bytes) + y * pixels.stride, row);
    return *kestrelid::Bitmap::wrap(pixels.width, pixels.height, static_cast<std::ptrdiff_t>(row),
                                    format, own, row * rows);
}

// 0 without an image.
int32_t side(const KestrelidImage* image, int (kestrelid::Bitmap::*length)() const noexcept) {
    return image ? (*image->image.bitmap().*length)() : 0;
}

}  // namespace

KestrelidStatus kestrelid_image_read(const char* path, KestrelidImage** image,
                                     KestrelidError** error) {
    return guarded(error, [&] {
        require(image, "image");
        *image = nullptr;
        require(path, "path");
        *image = upright(kestrelid::readImage(path), std::string(*path ? path : "''") + ": ");
    });
}

KestrelidStatus kestrelid_image_decode(const void* bytes, size_t size, KestrelidImage** image,
                                       KestrelidError** error) {
    return guarded(error, [&] {
        require(image, "image");
        *image = nullptr;
        require(bytes, "bytes");
        *image = upright(
            kestrelid::decodeImage(std::span(static_cast<const std::byte*>(bytes), size)), "");
    });
}

KestrelidStatus kestrelid_image_from_pixels(const KestrelidPixels* pixels, KestrelidImage** image,
                                            KestrelidError** error) {
    return guarded(error, [&] {
        require(image, "image");
        *image = nullptr;
        require(pixels, "pixels");
        checkPixels(*pixels);
        *image = new KestrelidImage{kestrelid::Image(copy(*pixels))};
    });
}

int32_t kestrelid_image_width(const KestrelidImage* image) {
    return side(image, &kestrelid::Bitmap::width);
}

int32_t kestrelid_image_height(const KestrelidImage* image) {
    return side(image, &kestrelid::Bitmap::height);
}

void kestrelid_image_release(KestrelidImage* image) {
    delete image;
}
