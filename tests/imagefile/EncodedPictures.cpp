#include "tests/imagefile/EncodedPictures.h"

#include "tests/imagefile/BlockPicture.h"

#include <gtest/gtest.h>
#include <libexif/exif-data.h>
#include <png.h>
#include <tiffio.h>
#include <turbojpeg.h>
#include <webp/encode.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

namespace kestrelid::imagefile {
namespace {

enum class Samples { rgb, rgba, gray, grayAlpha, whiteIsZero, palette, ink };

void append(Bytes& to, const void* from, std::size_t size) {
    const auto* bytes = static_cast<const std::byte*>(from);
    to.insert(to.end(), bytes, bytes + size);
}

void appendByte(Bytes& to, int value) {
    to.push_back(static_cast<std::byte>(value));
}

int paletteIndex(const Rgb& color) {
    return static_cast<int>(std::ranges::find(kBlockColors, color) - kBlockColors.begin());
}

// One row after another, without padding; with 16 bits,
// both bytes of a sample are the same in either byte order.
Bytes samplesOf(const Bitmap& rgb, Samples kind, int opacity = 255, int bits = 8) {
    Bytes samples;
    for (int y = 0; y < rgb.height(); ++y) {
        for (int x = 0; x < rgb.width(); ++x) {
            const std::byte* pixel = rgb.row(y) + x * 3;
            const Rgb color = {std::to_integer<int>(pixel[0]), std::to_integer<int>(pixel[1]),
                               std::to_integer<int>(pixel[2])};
            std::vector<int> values;
            switch (kind) {
            case Samples::rgb:
                values = {color[0], color[1], color[2]};
                break;
            case Samples::rgba:
                values = {color[0], color[1], color[2], opacity};
                break;
            case Samples::gray:
                values = {lumaOf(color)};
                break;
            case Samples::grayAlpha:
                values = {lumaOf(color), opacity};
                break;
            case Samples::whiteIsZero:
                values = {255 - lumaOf(color)};
                break;
            case Samples::palette:
                values = {paletteIndex(color)};
                break;
            case Samples::ink:
                values = {255 - color[0], 255 - color[1], 255 - color[2], 0};
                break;
            }
            for (const int value : values) {
                for (int byte = 0; byte < bits / 8; ++byte)
                    appendByte(samples, value);
            }
        }
    }
    return samples;
}

// A file in memory that libtiff writes.
struct Target {
    Bytes bytes;
    std::size_t position = 0;
};

tmsize_t readTarget(thandle_t handle, void* to, tmsize_t count) {
    auto& target = *static_cast<Target*>(handle);
    const auto taken =
        std::min<std::size_t>(static_cast<std::size_t>(count),
                              target.bytes.size() - std::min(target.position, target.bytes.size()));
    std::copy_n(target.bytes.data() + target.position, taken, static_cast<std::byte*>(to));
    target.position += taken;
    return static_cast<tmsize_t>(taken);
}

tmsize_t writeTarget(thandle_t handle, void* from, tmsize_t count) {
    auto& target = *static_cast<Target*>(handle);
    const auto size = static_cast<std::size_t>(count);
    target.bytes.resize(std::max(target.bytes.size(), target.position + size));
    std::copy_n(static_cast<const std::byte*>(from), size, target.bytes.data() + target.position);
    target.position += size;
    return count;
}

toff_t seekTarget(thandle_t handle, toff_t offset, int from) {
    auto& target = *static_cast<Target*>(handle);
    target.position = offset + (from == SEEK_CUR   ? target.position
                                : from == SEEK_END ? target.bytes.size()
                                                   : std::size_t{0});
    return target.position;
}

void writeTiffPixels(TIFF* tiff, const Bytes& samples, int width, int height, int channels,
                     const TiffCase& options) {
    const auto pixelBytes = static_cast<std::size_t>(channels * options.bits / 8);
    const std::size_t rowBytes = pixelBytes * width;
    const std::size_t sampleBytes = pixelBytes / channels;
    for (int plane = 0; plane < (options.planes ? channels : 1) && !options.tiled; ++plane) {
        for (int y = 0; y < height; ++y) {
            Bytes row(samples.begin() + static_cast<std::ptrdiff_t>(y * rowBytes),
                      samples.begin() + static_cast<std::ptrdiff_t>((y + 1) * rowBytes));
            for (int x = 0; x < width && options.planes; ++x)
                std::memcpy(row.data() + x * sampleBytes,
                            &samples[y * rowBytes + x * pixelBytes + plane * sampleBytes],
                            sampleBytes);
            ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y),
                                        static_cast<std::uint16_t>(plane)),
                      1);
        }
    }
    for (int tile = 0; tile < kColumns * kRows && options.tiled; ++tile) {
        const int left = tile % kColumns * kBlock;
        const int top = tile / kColumns * kBlock;
        Bytes part;
        for (int y = top; y < top + kBlock; ++y)
            append(part, &samples[y * rowBytes + left * pixelBytes], kBlock * pixelBytes);
        ASSERT_GT(TIFFWriteTile(tiff, part.data(), static_cast<std::uint32_t>(left),
                                static_cast<std::uint32_t>(top), 0, 0),
                  0);
    }
}

void setTiffPalette(TIFF* tiff) {
    std::array<std::vector<std::uint16_t>, 3> maps;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        maps[channel].resize(256);
        for (std::size_t i = 0; i < kBlockColors.size(); ++i)
            maps[channel][i] = static_cast<std::uint16_t>(kBlockColors[i][channel] * 257);
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
}

struct TiffLayout {
    Samples samples;
    int photometric;
    int channels;
};

TiffLayout layoutOf(TiffCase::Color color) {
    switch (color) {
    case TiffCase::Color::rgba:
        return {Samples::rgba, PHOTOMETRIC_RGB, 4};
    case TiffCase::Color::gray:
        return {Samples::gray, PHOTOMETRIC_MINISBLACK, 1};
    case TiffCase::Color::whiteIsZero:
        return {Samples::whiteIsZero, PHOTOMETRIC_MINISWHITE, 1};
    case TiffCase::Color::palette:
        return {Samples::palette, PHOTOMETRIC_PALETTE, 1};
    case TiffCase::Color::ink:
        return {Samples::ink, PHOTOMETRIC_SEPARATED, 4};
    case TiffCase::Color::ycbcr:
        return {Samples::rgb, PHOTOMETRIC_YCBCR, 3};
    case TiffCase::Color::rgb:
        break;
    }
    return {Samples::rgb, PHOTOMETRIC_RGB, 3};
}

void appendPng(png_structp png, png_bytep from, std::size_t count) {
    append(*static_cast<Bytes*>(png_get_io_ptr(png)), from, count);
}

// Without handlers of its own: an error of libpng ends the test program with a message.
class PngWriter {
public:
    PngWriter() {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        info_ = png_create_info_struct(png_);
        png_set_write_fn(png_, &bytes, &appendPng, nullptr);
    }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png_, &info_); }

    [[nodiscard]] png_structp png() const { return png_; }
    [[nodiscard]] png_infop info() const { return info_; }

    Bytes bytes;

private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

struct PngLayout {
    Samples samples;
    int colorType;
    int channels;
};

PngLayout layoutOf(PngCase::Color color) {
    switch (color) {
    case PngCase::Color::rgba:
        return {Samples::rgba, PNG_COLOR_TYPE_RGB_ALPHA, 4};
    case PngCase::Color::gray:
        return {Samples::gray, PNG_COLOR_TYPE_GRAY, 1};
    case PngCase::Color::grayAlpha:
        return {Samples::grayAlpha, PNG_COLOR_TYPE_GRAY_ALPHA, 2};
    case PngCase::Color::palette:
        return {Samples::palette, PNG_COLOR_TYPE_PALETTE, 1};
    case PngCase::Color::rgb:
        break;
    }
    return {Samples::rgb, PNG_COLOR_TYPE_RGB, 3};
}

void setPngExtras(const PngWriter& writer, const PngCase& options) {
    if (options.color == PngCase::Color::palette) {
        std::vector<png_color> palette;
        for (const Rgb& color : kBlockColors) {
            palette.push_back({static_cast<png_byte>(color[0]), static_cast<png_byte>(color[1]),
                               static_cast<png_byte>(color[2])});
        }
        png_set_PLTE(writer.png(), writer.info(), palette.data(), static_cast<int>(palette.size()));
        const std::vector<png_byte> opacities(palette.size(),
                                              static_cast<png_byte>(options.opacity));
        if (options.opacity < 255)
            png_set_tRNS(writer.png(), writer.info(), opacities.data(),
                         static_cast<int>(opacities.size()), nullptr);
    }
    if (options.orientation) {
        Bytes exif = encodeExif(*options.orientation);
        png_set_eXIf_1(writer.png(), writer.info(), static_cast<png_uint_32>(exif.size() - 6),
                       reinterpret_cast<png_bytep>(exif.data()) + 6);
    }
    std::string bomb(1'000'000, 'a');
    char key[] = "Comment";
    png_text text = {};
    text.compression = PNG_TEXT_COMPRESSION_zTXt;
    text.key = key;
    text.text = bomb.data();
    for (std::size_t i = 0; i < options.textBombs; ++i)
        png_set_text(writer.png(), writer.info(), &text, 1);
}

void appendChunk(Bytes& riff, const char* name, const Bytes& contents) {
    const auto size = static_cast<std::uint32_t>(contents.size());
    append(riff, name, 4);
    for (int shift = 0; shift < 32; shift += 8)
        appendByte(riff, static_cast<int>(size >> shift & 255));
    append(riff, contents.data(), contents.size());
    if (size % 2 != 0)
        appendByte(riff, 0);
}

void append24(Bytes& to, int value) {
    for (int shift = 0; shift < 24; shift += 8)
        appendByte(to, value >> shift & 255);
}

}  // namespace

Bytes encodeExif(int orientation) {
    ExifData* data = exif_data_new();
    exif_data_set_byte_order(data, EXIF_BYTE_ORDER_INTEL);
    ExifEntry* entry = exif_entry_new();
    exif_content_add_entry(data->ifd[EXIF_IFD_0], entry);
    exif_entry_initialize(entry, EXIF_TAG_ORIENTATION);
    exif_set_short(entry->data, EXIF_BYTE_ORDER_INTEL, static_cast<ExifShort>(orientation));
    unsigned char* saved = nullptr;
    unsigned int size = 0;
    exif_data_save_data(data, &saved, &size);
    Bytes bytes;
    append(bytes, saved, size);
    std::free(saved);
    exif_entry_unref(entry);
    exif_data_unref(data);
    return bytes;
}

Bytes encodeTestJpeg(const Bitmap& rgb, const JpegCase& options) {
    const bool ink = options.color == JpegCase::Color::ink;
    // In a JPEG, 255 is no ink: the samples of RGB and a fourth that says no black.
    const Bytes samples = samplesOf(rgb, ink ? Samples::rgba : Samples::rgb);
    tjhandle turbo = tjInitCompress();
    unsigned char* encoded = nullptr;
    unsigned long size = 0;
    const int subsampling = options.color == JpegCase::Color::gray ? TJSAMP_GRAY
                            : ink                                  ? TJSAMP_444
                                                                   : TJSAMP_420;
    EXPECT_EQ(tjCompress2(turbo, reinterpret_cast<const unsigned char*>(samples.data()),
                          rgb.width(), 0, rgb.height(), ink ? TJPF_CMYK : TJPF_RGB, &encoded, &size,
                          subsampling, 95, options.progressive ? TJFLAG_PROGRESSIVE : 0),
              0)
        << tjGetErrorStr2(turbo);
    Bytes bytes;
    append(bytes, encoded, size);
    tjFree(encoded);
    tjDestroy(turbo);
    if (options.orientation) {
        const Bytes exif = encodeExif(*options.orientation);
        Bytes segment = {std::byte{0xFF}, std::byte{0xE1}};
        appendByte(segment, static_cast<int>((exif.size() + 2) >> 8));
        appendByte(segment, static_cast<int>((exif.size() + 2) & 255));
        append(segment, exif.data(), exif.size());
        bytes.insert(bytes.begin() + 2, segment.begin(), segment.end());
    }
    return bytes;
}

Bytes encodeTestPng(const Bitmap& rgb, const PngCase& options) {
    const PngLayout layout = layoutOf(options.color);
    Bytes samples = samplesOf(rgb, layout.samples, options.opacity, std::max(options.bitDepth, 8));
    const auto rowBytes = samples.size() / static_cast<std::size_t>(rgb.height());
    PngWriter writer;
    png_set_IHDR(writer.png(), writer.info(), static_cast<png_uint_32>(rgb.width()),
                 static_cast<png_uint_32>(rgb.height()), options.bitDepth, layout.colorType,
                 options.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    setPngExtras(writer, options);
    png_write_info(writer.png(), writer.info());
    png_set_packing(writer.png());  // palettes of fewer than 8 bits
    std::vector<png_bytep> rows;
    for (int y = 0; y < rgb.height(); ++y)
        rows.push_back(reinterpret_cast<png_bytep>(samples.data()) +
                       static_cast<std::size_t>(y) * rowBytes);
    png_set_interlace_handling(writer.png());
    png_write_image(writer.png(), rows.data());
    png_write_end(writer.png(), nullptr);
    return writer.bytes;
}

Bytes pngHeader(std::uint32_t width, std::uint32_t height) {
    PngWriter writer;
    png_set_IHDR(writer.png(), writer.info(), width, height, 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    png_write_info(writer.png(), writer.info());
    Bytes bytes = writer.bytes;
    append(bytes, "\0\0\0\x08IDAT", 8);
    return bytes;
}

Bytes encodeTestWebP(const Bitmap& rgb, const WebPCase& options) {
    const bool alpha = options.opacity < 255;
    const Bytes samples = samplesOf(rgb, alpha ? Samples::rgba : Samples::rgb, options.opacity);
    const auto* pixels = reinterpret_cast<const std::uint8_t*>(samples.data());
    const int width = rgb.width();
    const int height = rgb.height();
    std::uint8_t* encoded = nullptr;
    const std::size_t size =
        options.lossless
            ? (alpha ? WebPEncodeLosslessRGBA(pixels, width, height, width * 4, &encoded)
                     : WebPEncodeLosslessRGB(pixels, width, height, width * 3, &encoded))
            : (alpha ? WebPEncodeRGBA(pixels, width, height, width * 4, 95, &encoded)
                     : WebPEncodeRGB(pixels, width, height, width * 3, 95, &encoded));
    EXPECT_GT(size, 0u);
    Bytes bytes;
    append(bytes, encoded, size);
    WebPFree(encoded);
    if (!options.orientation && !options.animated)
        return bytes;

    // The extended layout (WebP container, "Extended File Format"): canvas, picture, EXIF.
    constexpr std::size_t kRiffHeader = 12;
    Bytes chunks(bytes.begin() + kRiffHeader, bytes.end());
    Bytes canvas = {
        static_cast<std::byte>((options.orientation ? 0x08 : 0) | (options.animated ? 0x02 : 0)),
        std::byte{0}, std::byte{0}, std::byte{0}};
    append24(canvas, (options.animated ? 2 : 1) * width - 1);
    append24(canvas, (options.animated ? 2 : 1) * height - 1);
    Bytes riff;
    append(riff, "WEBP", 4);
    appendChunk(riff, "VP8X", canvas);
    if (options.animated) {
        appendChunk(riff, "ANIM", Bytes(6, std::byte{0}));
        Bytes frame;
        for (const int value : {width / 2, height / 2, width - 1, height - 1, 100})
            append24(frame, value);
        appendByte(frame, 0);
        append(frame, chunks.data(), chunks.size());
        appendChunk(riff, "ANMF", frame);
    } else {
        append(riff, chunks.data(), chunks.size());
    }
    if (options.orientation)
        appendChunk(riff, "EXIF", encodeExif(*options.orientation));
    Bytes file;
    appendChunk(file, "RIFF", riff);
    return file;
}

Bytes encodeTestTiff(const Bitmap& rgb, const TiffCase& options) {
    const TiffLayout layout = layoutOf(options.color);
    Target target;
    TIFF* tiff = TIFFClientOpen(
        "memory", options.bigEndian ? "wb" : "wl", &target, &readTarget, &writeTarget, &seekTarget,
        [](thandle_t) { return 0; },
        [](thandle_t handle) { return toff_t{static_cast<Target*>(handle)->bytes.size()}; },
        [](thandle_t, void**, toff_t*) { return 0; }, [](thandle_t, void*, toff_t) {});
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, rgb.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rgb.height());
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, layout.photometric);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, options.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, layout.channels);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                 options.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (options.tiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kBlock);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, kBlock);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kBlock);
    }
    const std::uint16_t unassociated = EXTRASAMPLE_UNASSALPHA;
    if (options.color == TiffCase::Color::rgba)
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &unassociated);
    if (options.color == TiffCase::Color::palette)
        setTiffPalette(tiff);
    if (options.color == TiffCase::Color::ycbcr)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (options.orientation)
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, *options.orientation);
    writeTiffPixels(tiff, samplesOf(rgb, layout.samples, options.opacity, options.bits),
                    rgb.width(), rgb.height(), layout.channels, options);
    TIFFClose(tiff);
    return target.bytes;
}

Bytes committedHeic(const char* name) {
    std::ifstream file(std::string(KESTRELID_SOURCE_DIR "/tests/imagefile/data/") + name,
                       std::ios::binary);
    const std::string contents(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(contents.empty());
    Bytes bytes;
    append(bytes, contents.data(), contents.size());
    return bytes;
}

}  // namespace kestrelid::imagefile
