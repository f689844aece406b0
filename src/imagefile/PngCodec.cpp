#include "imagefile/PngCodec.h"

#include "base/PixelStore.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/ExifOrientation.h"

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

namespace kestrelid::imagefile {
namespace {

// One reading. libpng leaves a call that fails by longjmp: the member functions that call it return
// false then, and hold nothing with a destructor.
class PngReader {
public:
    explicit PngReader(std::span<const std::byte> file) : rest_(file) {
        png_ = png_create_read_struct_2(PNG_LIBPNG_VER_STRING, this, &PngReader::onError,
                                        &PngReader::onWarning, this, &PngReader::take, nullptr);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

    [[nodiscard]] bool started() const { return info_ != nullptr; }
    // Memory was refused. libpng may have left parts out without an error: the transparency, the
    // orientation.
    [[nodiscard]] bool isShort() const { return isShort_; }
    [[nodiscard]] bool readHeader();
    [[nodiscard]] bool chooseLayout();
    [[nodiscard]] bool readRows(const base::PixelStore& pixels);

    [[nodiscard]] std::int64_t width() const { return png_get_image_width(png_, info_); }
    [[nodiscard]] std::int64_t height() const { return png_get_image_height(png_, info_); }
    [[nodiscard]] int channels() const { return png_get_channels(png_, info_); }
    [[nodiscard]] std::span<const std::byte> exif() const;
    [[nodiscard]] ImageError error() const {
        return decodingError(truncated_ ? Fault::truncated : Fault::damaged, "PNG", text_.data());
    }

private:
    static void readBytes(png_structp png, png_bytep to, std::size_t count);
    static png_voidp take(png_structp png, png_alloc_size_t size);
    [[noreturn]] static void onError(png_structp png, png_const_charp text);
    static void onWarning(png_structp, png_const_charp) {}

    std::span<const std::byte> rest_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    bool truncated_ = false;
    bool isShort_ = false;
    std::array<char, 160> text_ = {};
};

void PngReader::readBytes(png_structp png, png_bytep to, std::size_t count) {
    auto& reader = *static_cast<PngReader*>(png_get_io_ptr(png));
    if (count > reader.rest_.size()) {
        reader.truncated_ = true;
        png_error(png, "the file ends early");
    }
    std::memcpy(to, reader.rest_.data(), count);
    reader.rest_ = reader.rest_.subspan(count);
}

// libpng gives it back by std::free.
png_voidp PngReader::take(png_structp png, png_alloc_size_t size) {
    void* const memory = std::malloc(size);
    if (!memory)
        static_cast<PngReader*>(png_get_mem_ptr(png))->isShort_ = true;
    return memory;
}

void PngReader::onError(png_structp png, png_const_charp text) {
    auto& reader = *static_cast<PngReader*>(png_get_error_ptr(png));
    std::snprintf(reader.text_.data(), reader.text_.size(), "%s", text);
    png_longjmp(png, 1);
}

bool PngReader::readHeader() {
    if (setjmp(png_jmpbuf(png_)))
        return false;
    png_set_read_fn(png_, this, &PngReader::readBytes);
    // libpng's own limit is lower than what checkSize() reports on.
    png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    // Texts and profiles are compressed: a thousand of them,
    // a few kilobytes each, would unpack to gigabytes.
    static constexpr png_byte kUnused[] = "iCCP\0iTXt\0sPLT\0tEXt\0zTXt\0hIST";
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kUnused, sizeof kUnused / 5);
    png_read_info(png_, info_);
    return true;
}

// Gray, RGB or, if anything is transparent, RGBA; 8 bits each.
bool PngReader::chooseLayout() {
    if (setjmp(png_jmpbuf(png_)))
        return false;
    png_set_expand(png_);
    png_set_scale_16(png_);
    const bool transparent = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 ||
                             png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
    if (transparent)
        png_set_gray_to_rgb(png_);
    png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    return true;
}

bool PngReader::readRows(const base::PixelStore& pixels) {
    if (setjmp(png_jmpbuf(png_)))
        return false;
    const int passes =
        png_get_interlace_type(png_, info_) == PNG_INTERLACE_ADAM7 ? PNG_INTERLACE_ADAM7_PASSES : 1;
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < pixels.height(); ++y)
            png_read_row(png_, pixels.bytes(y), nullptr);
    }
    png_read_end(png_, info_);
    return true;
}

std::span<const std::byte> PngReader::exif() const {
    png_uint_32 size = 0;
    png_bytep bytes = nullptr;
    if (png_get_eXIf_1(png_, info_, &size, &bytes) == 0)
        return {};
    return {reinterpret_cast<const std::byte*>(bytes), size};
}

constexpr int kRgba = 4;  // channels

FileBytes encodeOpaque(const Bitmap& bitmap) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(bitmap.width());
    image.height = static_cast<png_uint_32>(bitmap.height());
    image.format = bitmap.format() == PixelFormat::gray8 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;  // photos take several times as long at the default level
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<std::byte> encoded(size);
    const int written =
        png_image_write_to_memory(&image, encoded.data(), &size, 0, bitmap.row(0),
                                  static_cast<png_int_32>(bitmap.stride()), nullptr);
    if (written == 0)
        return tl::unexpected(ImageError{std::string("PNG encoder: ") + image.message});
    encoded.resize(size);
    return encoded;
}

ImageResult decode(PngReader& reader) {
    if (!reader.started())
        return ImageError{"the PNG decoder does not start"};
    if (!reader.readHeader())
        return reader.error();
    if (auto error = checkSize(reader.width(), reader.height()))
        return *std::move(error);
    if (!reader.chooseLayout())
        return reader.error();

    const int channels = reader.channels();
    base::PixelStore pixels(static_cast<int>(reader.width()), static_cast<int>(reader.height()),
                            channels);
    if (!reader.readRows(pixels))
        return reader.error();
    if (channels == kRgba) {
        for (int y = 0; y < pixels.height(); ++y)
            layOnWhite(pixels.bytes(y), pixels.width(), Alpha::straight);
    }
    return std::move(pixels).toImage(channels == 1 ? PixelFormat::gray8 : PixelFormat::rgb8,
                                     exifOrientation(reader.exif()));
}

}  // namespace

ImageResult decodePng(std::span<const std::byte> file) {
    PngReader reader(file);
    ImageResult decoded = decode(reader);
    if (reader.isShort())
        return outOfMemory();
    return decoded;
}

FileBytes encodePng(const Bitmap& bitmap) {
    const PixelFormat format = bitmap.format();
    if (format == PixelFormat::gray8 || format == PixelFormat::rgb8)
        return encodeOpaque(bitmap);
    // libpng would write the fourth byte as transparency; a Bitmap's means nothing.
    const int pixel = bytesPerPixel(format);
    const int red = format == PixelFormat::rgba8 ? 0 : 2;
    base::PixelStore rgb(bitmap.width(), bitmap.height(), bytesPerPixel(PixelFormat::rgb8));
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::byte* from = bitmap.row(y);
        std::byte* to = rgb.row(y);
        for (int x = 0; x < bitmap.width(); ++x, from += pixel, to += 3) {
            to[0] = from[red];
            to[1] = from[1];
            to[2] = from[2 - red];
        }
    }
    return encodeOpaque(*std::move(rgb).toImage(PixelFormat::rgb8, Orientation::up).bitmap());
}

}  // namespace kestrelid::imagefile
