#pragma once

#include <kestrelid/ImageFile.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kestrelid {

// Bytes that one decoding may hold at once, file apart: twice the largest RGB picture.
inline constexpr std::int64_t kMaximumDecoderMemory = 2 * 3 * kMaximumPixels;

// None where kMaximumSide and kMaximumPixels admit the
// picture. Takes what a header claims, so any value.
[[nodiscard]] std::optional<ImageError> checkSize(std::int64_t width, std::int64_t height);

// None where kMaximumDecoderMemory admits bytes:
// pixels and what the codec library holds beside them.
[[nodiscard]] std::optional<ImageError> checkMemory(std::int64_t bytes);

// "truncated JPEG: text", for instance, as one printable line whatever the library wrote.
enum class Fault { truncated, damaged, unsupported };
[[nodiscard]] ImageError decodingError(Fault fault, const char* format, const std::string& text);

// Memory for the pixels of one picture, not initialised,
// that a decoder fills before a Bitmap shows it.
class PixelBuffer {
public:
    // The size has passed checkSize(). bytesPerPixel: as the
    // decoder writes them; up to 4. Throws std::bad_alloc.
    PixelBuffer(int width, int height, int bytesPerPixel);

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] std::ptrdiff_t stride() const { return stride_; }
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(stride_) * height_; }
    [[nodiscard]] std::byte* row(int y) const { return pixels_.get() + y * stride_; }
    [[nodiscard]] unsigned char* bytes(int y = 0) const {
        return reinterpret_cast<unsigned char*>(row(y));
    }

    // A pixel of format takes no more bytes than bytesPerPixel said; rows keep their distance.
    [[nodiscard]] Image toImage(PixelFormat format, Orientation orientation) &&;

private:
    int width_;
    int height_;
    std::ptrdiff_t stride_;
    std::shared_ptr<std::byte[]> pixels_;
};

enum class Alpha { straight, premultiplied };

// Turns width RGBA pixels into RGB in place, as they look on white.
void layOnWhite(unsigned char* row, int width, Alpha alpha);

}  // namespace kestrelid
