#include "tests/imagefile/EncodedPictures.h"

#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/FileBytes.h"

#include <png.h>
#include <sys/mman.h>
#include <tiffio.h>
#include <turbojpeg.h>
#include <unistd.h>
#include <webp/encode.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kestrelid::imagefile {
namespace {

std::vector<int> samplesOf(const Rgb& color, Color kind, int opacity) {
    const auto& [red, green, blue] = color;
    switch (kind) {
    case Color::rgba:
        return {red, green, blue, opacity};
    case Color::gray:
        return {lumaOf(color)};
    case Color::grayAlpha:
        return {lumaOf(color), opacity};
    case Color::whiteIsZero:
        return {255 - lumaOf(color)};
    case Color::palette:
        return {static_cast<int>(std::ranges::find(kBlockColors, color) - kBlockColors.begin())};
    case Color::ink:
        return {255 - red, 255 - green, 255 - blue, 0};
    case Color::rgb:
    case Color::ycbcr:
        break;
    }
    return {red, green, blue};
}

// One row after another, without padding; with 16 bits, both bytes of a sample are the same in
// either byte order.
Bytes samplesOf(const Bitmap& rgb, Color kind, int opacity = 255, int bits = 8) {
    Bytes samples;
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x)
            for (const int value : samplesOf(colorAt(rgb, x, y), kind, opacity))
                samples.insert(samples.end(), static_cast<std::size_t>(bits / 8),
                               static_cast<std::byte>(value));
    return samples;
}

template <typename Byte>
Byte* as(Bytes& bytes) {
    return reinterpret_cast<Byte*>(bytes.data());
}

// An EXIF block with its "Exif\0\0" lead: a TIFF header and a directory of one entry.
Bytes encodeExif(int orientation) {
    Bytes exif = bytesOf({"Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24});
    appendNumber(exif, static_cast<std::uint32_t>(orientation), 4, false);
    appendNumber(exif, 0, 4, false);
    return exif;
}

// Without handlers of its own: an error of libpng ends the test program with a message.
struct PngWriter {
    PngWriter() {
        png_set_write_fn(
            png, &bytes,
            [](png_structp writer, png_bytep from, std::size_t count) {
                const auto* data = reinterpret_cast<const std::byte*>(from);
                auto& to = *static_cast<Bytes*>(png_get_io_ptr(writer));
                to.insert(to.end(), data, data + count);
            },
            nullptr);
    }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&png, &info); }

    void begin(std::uint32_t width, std::uint32_t height, const PngCase& options) {
        const int type = options.color == Color::rgba        ? PNG_COLOR_TYPE_RGB_ALPHA
                         : options.color == Color::gray      ? PNG_COLOR_TYPE_GRAY
                         : options.color == Color::grayAlpha ? PNG_COLOR_TYPE_GRAY_ALPHA
                         : options.color == Color::palette   ? PNG_COLOR_TYPE_PALETTE
                                                             : PNG_COLOR_TYPE_RGB;
        png_set_IHDR(png, info, width, height, options.bitDepth, type,
                     options.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    }

    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Bytes bytes;
};

void setPngExtras(PngWriter& writer, const PngCase& options) {
    if (options.color == Color::palette) {
        std::vector<png_color> palette;
        for (const auto& [red, green, blue] : kBlockColors)
            palette.push_back({static_cast<png_byte>(red), static_cast<png_byte>(green),
                               static_cast<png_byte>(blue)});
        const auto count = static_cast<int>(palette.size());
        png_set_PLTE(writer.png, writer.info, palette.data(), count);
        const std::vector<png_byte> opacities(palette.size(),
                                              static_cast<png_byte>(options.opacity));
        if (options.opacity < 255)
            png_set_tRNS(writer.png, writer.info, opacities.data(), count, nullptr);
    }
    if (options.orientation) {
        Bytes exif = encodeExif(*options.orientation);
        png_set_eXIf_1(writer.png, writer.info, static_cast<png_uint_32>(exif.size() - 6),
                       as<png_byte>(exif) + 6);
    }
    std::string bomb(1'000'000, 'a');
    char key[] = "Comment";
    png_text text = {};
    text.compression = PNG_TEXT_COMPRESSION_zTXt;
    text.key = key;
    text.text = bomb.data();
    for (std::size_t i = 0; i < options.textBombs; ++i)
        png_set_text(writer.png, writer.info, &text, 1);
}

void appendChunk(Bytes& riff, std::string_view name, const Bytes& contents) {
    append(riff, bytesOf(name));
    appendNumber(riff, static_cast<std::uint32_t>(contents.size()), 4, false);
    append(riff, contents);
    riff.resize(riff.size() + riff.size() % 2);
}

void writeTiffPixels(TIFF* tiff, const Bytes& samples, int width, int height,
                     const TiffCase& options) {
    const std::size_t rowBytes = samples.size() / static_cast<std::size_t>(height);
    const std::size_t pixelBytes = rowBytes / static_cast<std::size_t>(width);
    const std::size_t sampleBytes = static_cast<std::size_t>(options.bits) / 8;
    const auto at = [&](int x, int y) { return samples.begin() + y * rowBytes + x * pixelBytes; };
    const std::size_t planes = options.planes ? pixelBytes / sampleBytes : 1;
    for (std::size_t plane = 0; plane < planes && !options.tiled; ++plane)
        for (int y = 0; y < height; ++y) {
            Bytes row;
            for (int x = 0; x < width; ++x)
                row.insert(row.end(), at(x, y) + plane * sampleBytes,
                           at(x, y) + (options.planes ? (plane + 1) * sampleBytes : pixelBytes));
            ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y),
                                        static_cast<std::uint16_t>(plane)),
                      1);
        }
    for (int tile = 0; tile < kColumns * kRows && options.tiled; ++tile) {
        const int left = tile % kColumns * kBlock;
        const int top = tile / kColumns * kBlock;
        Bytes part;
        for (int y = top; y < top + kBlock; ++y)
            part.insert(part.end(), at(left, y), at(left + kBlock, y));
        ASSERT_GT(TIFFWriteTile(tiff, part.data(), static_cast<std::uint32_t>(left),
                                static_cast<std::uint32_t>(top), 0, 0),
                  0);
    }
}

void setTiffColor(TIFF* tiff, Color color) {
    const int photometric = color == Color::gray          ? PHOTOMETRIC_MINISBLACK
                            : color == Color::whiteIsZero ? PHOTOMETRIC_MINISWHITE
                            : color == Color::palette     ? PHOTOMETRIC_PALETTE
                            : color == Color::ink         ? PHOTOMETRIC_SEPARATED
                            : color == Color::ycbcr       ? PHOTOMETRIC_YCBCR
                                                          : PHOTOMETRIC_RGB;
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    const std::uint16_t unassociated = EXTRASAMPLE_UNASSALPHA;
    if (color == Color::rgba)
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &unassociated);
    if (color == Color::ycbcr)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (color != Color::palette)
        return;
    std::array<std::array<std::uint16_t, 256>, 3> maps{};
    for (std::size_t channel = 0; channel < 3; ++channel)
        for (std::size_t i = 0; i < kBlockColors.size(); ++i)
            maps[channel][i] = static_cast<std::uint16_t>(kBlockColors[i][channel] * 257);
    TIFFSetField(tiff, TIFFTAG_COLORMAP, maps[0].data(), maps[1].data(), maps[2].data());
}

Bytes contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string contents(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(contents.empty()) << path;
    return bytesOf(contents);
}

}  // namespace

Bytes encodeTestJpeg(const Bitmap& rgb, const JpegCase& options) {
    const bool ink = options.color == Color::ink;
    // In a JPEG, 255 is no ink: the samples of RGB and a fourth that says no black.
    Bytes samples = samplesOf(rgb, ink ? Color::rgba : Color::rgb);
    tjhandle turbo = tjInitCompress();
    unsigned char* encoded = nullptr;
    unsigned long size = 0;
    const int subsampling = options.color == Color::gray ? TJSAMP_GRAY
                            : ink                        ? TJSAMP_444
                                                         : TJSAMP_420;
    EXPECT_EQ(tjCompress2(turbo, as<unsigned char>(samples), rgb.width(), 0, rgb.height(),
                          ink ? TJPF_CMYK : TJPF_RGB, &encoded, &size, subsampling, 95,
                          options.progressive ? TJFLAG_PROGRESSIVE : 0),
              0)
        << tjGetErrorStr2(turbo);
    Bytes bytes = bytesOf({reinterpret_cast<const char*>(encoded), size});
    tjFree(encoded);
    tjDestroy(turbo);
    if (options.orientation) {
        const Bytes exif = encodeExif(*options.orientation);
        Bytes segment = bytesOf("\xFF\xE1");
        appendNumber(segment, static_cast<std::uint32_t>(exif.size() + 2), 2, true);
        append(segment, exif);
        bytes.insert(bytes.begin() + 2, segment.begin(), segment.end());
    }
    return bytes;
}

Bytes encodeTestPng(const Bitmap& rgb, const PngCase& options) {
    Bytes samples = samplesOf(rgb, options.color, options.opacity, std::max(options.bitDepth, 8));
    const auto height = static_cast<std::size_t>(rgb.height());
    PngWriter writer;
    writer.begin(static_cast<std::uint32_t>(rgb.width()), static_cast<std::uint32_t>(height),
                 options);
    setPngExtras(writer, options);
    png_write_info(writer.png, writer.info);
    png_set_packing(writer.png);  // palettes of fewer than 8 bits
    std::vector<png_bytep> rows;
    for (std::size_t y = 0; y < height; ++y)
        rows.push_back(as<png_byte>(samples) + y * (samples.size() / height));
    png_set_interlace_handling(writer.png);
    png_write_image(writer.png, rows.data());
    png_write_end(writer.png, nullptr);
    return writer.bytes;
}

Bytes pngHeader(std::uint32_t width, std::uint32_t height) {
    PngWriter writer;
    writer.begin(width, height, {});
    png_write_info(writer.png, writer.info);
    append(writer.bytes, bytesOf({"\0\0\0\x08IDAT", 8}));
    return writer.bytes;
}

Bytes encodeTestWebP(const Bitmap& rgb, const WebPCase& options) {
    // Opaque pictures are written without alpha whatever they are given as.
    Bytes samples = samplesOf(rgb, Color::rgba, options.opacity);
    const auto* pixels = as<std::uint8_t>(samples);
    const int width = rgb.width();
    const int height = rgb.height();
    std::uint8_t* encoded = nullptr;
    const std::size_t size =
        options.lossless ? WebPEncodeLosslessRGBA(pixels, width, height, width * 4, &encoded)
                         : WebPEncodeRGBA(pixels, width, height, width * 4, 95, &encoded);
    EXPECT_GT(size, 0u);
    const Bytes bytes = bytesOf({reinterpret_cast<const char*>(encoded), size});
    WebPFree(encoded);
    if (!options.orientation && !options.animated)
        return bytes;

    // The extended layout (WebP container, "Extended File Format"): canvas, picture, EXIF.
    constexpr std::size_t kRiffHeader = 12;
    const Bytes chunks(bytes.begin() + kRiffHeader, bytes.end());
    const auto dimensions = [](std::uint32_t flags, std::initializer_list<int> values) {
        Bytes result;
        appendNumber(result, flags, 4, false);
        for (const int value : values)
            appendNumber(result, static_cast<std::uint32_t>(value), 3, false);
        return result;
    };
    const int scale = options.animated ? 2 : 1;
    Bytes riff = bytesOf("WEBP");
    appendChunk(riff, "VP8X",
                dimensions((options.orientation ? 0x08 : 0) | (options.animated ? 0x02 : 0),
                           {scale * width - 1, scale * height - 1}));
    if (options.animated) {
        appendChunk(riff, "ANIM", Bytes(6));
        Bytes frame = dimensions(0, {width / 2, height / 2, width - 1, height - 1, 100});
        frame.erase(frame.begin(), frame.begin() + 4);
        frame.push_back({});
        append(frame, chunks);
        appendChunk(riff, "ANMF", frame);
    } else {
        append(riff, chunks);
    }
    if (options.orientation)
        appendChunk(riff, "EXIF", encodeExif(*options.orientation));
    Bytes file;
    appendChunk(file, "RIFF", riff);
    return file;
}

Bytes encodeTestTiff(const Bitmap& rgb, const TiffCase& options) {
    const Bytes samples = samplesOf(rgb, options.color, options.opacity, options.bits);
    const auto pixels =
        static_cast<std::size_t>(rgb.width()) * static_cast<std::size_t>(rgb.height());
    const int memory = memfd_create("tiff", 0);
    TIFF* tiff = TIFFFdOpen(memory, "memory", options.bigEndian ? "wb" : "wl");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, rgb.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rgb.height());
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.compression);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, options.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL,
                 static_cast<int>(samples.size() / pixels) / (options.bits / 8));
    setTiffColor(tiff, options.color);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                 options.planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    if (options.tiled) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kBlock);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, kBlock);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kBlock);
    }
    if (options.orientation)
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, *options.orientation);
    writeTiffPixels(tiff, samples, rgb.width(), rgb.height(), options);
    const std::string path = "/proc/self/fd/" + std::to_string(memory);
    TIFFFlush(tiff);
    const Bytes file = contentsOf(path);
    TIFFClose(tiff);
    return file;
}

Bytes committedHeic(const char* name) {
    return contentsOf(std::string(KESTRELID_SOURCE_DIR "/tests/imagefile/data/") + name);
}

}  // namespace kestrelid::imagefile
