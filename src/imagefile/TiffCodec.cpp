#include "imagefile/TiffCodec.h"

#include "base/PixelStore.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/ExifOrientation.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrelid::imagefile {
namespace {

// The file as libtiff reads it, and the first error that libtiff reported.
struct Source {
    std::span<const std::byte> file;
    std::uint64_t position = 0;
    std::array<char, 160> complaint = {};
    bool endsEarly = false;
};

Source& sourceOf(thandle_t handle) {
    return *static_cast<Source*>(handle);
}

tmsize_t readSource(thandle_t handle, void* to, tmsize_t count) {
    Source& source = sourceOf(handle);
    const std::uint64_t left =
        source.position < source.file.size() ? source.file.size() - source.position : 0;
    const auto taken =
        std::min<std::uint64_t>(left, static_cast<std::uint64_t>(std::max<tmsize_t>(count, 0)));
    if (taken > 0)
        std::memcpy(to, source.file.data() + source.position, taken);
    source.position += taken;
    return static_cast<tmsize_t>(taken);
}

tmsize_t refuseWrite(thandle_t, void*, tmsize_t) {
    return -1;
}

toff_t seekSource(thandle_t handle, toff_t offset, int from) {
    Source& source = sourceOf(handle);
    const std::uint64_t base = from == SEEK_CUR   ? source.position
                               : from == SEEK_END ? source.file.size()
                                                  : 0;
    source.position = base + offset;
    return source.position;
}

int closeSource(thandle_t) {
    return 0;
}
toff_t sourceSize(thandle_t handle) {
    return sourceOf(handle).file.size();
}

// Lets libtiff read strips in place; it never writes there.
int mapSource(thandle_t handle, void** base, toff_t* size) {
    const Source& source = sourceOf(handle);
    *base = const_cast<std::byte*>(source.file.data());
    *size = source.file.size();
    return 1;
}

void unmapSource(thandle_t, void*, toff_t) {}

// libtiff has no error code for it. Its messages about data beyond the end, some of them warnings,
// contain one of these.
void noteEarlyEnd(Source& source, std::string_view sentence) {
    constexpr std::array kWords = {"Read error", "Cannot read", "Can not read", "Not enough data",
                                   "IO error"};
    source.endsEarly |= std::ranges::any_of(
        kWords, [&](const char* words) { return sentence.find(words) != std::string_view::npos; });
}

// Non-zero means handled, so that libtiff prints nothing.
int onError(TIFF*, void* user, const char*, const char* format, std::va_list arguments) {
    auto& source = *static_cast<Source*>(user);
    noteEarlyEnd(source, format);
    if (source.complaint.front() == '\0')
        std::vsnprintf(source.complaint.data(), source.complaint.size(), format, arguments);
    return 1;
}

int onWarning(TIFF*, void* user, const char*, const char* format, std::va_list) {
    noteEarlyEnd(*static_cast<Source*>(user), format);
    return 1;
}

struct CloseTiff {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

Tiff openTiff(Source& source) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &onError, &source);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &onWarning, &source);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaximumDecoderMemory);
    return Tiff(TIFFClientOpenExt("TIFF", "r", &source, &readSource, &refuseWrite, &seekSource,
                                  &closeSource, &sourceSize, &mapSource, &unmapSource,
                                  options.get()));
}

ImageError errorFor(const Source& source) {
    const std::string text = source.complaint.data();
    if (text.starts_with("Sorry, "))
        return decodingError(Fault::unsupported, "TIFF", text.substr(7));
    return decodingError(source.endsEarly ? Fault::truncated : Fault::damaged, "TIFF",
                         text.empty() ? "its data make no sense" : text);
}

// The ones in use for pictures and documents; LZMA and
// others reserve memory by what the file asks for.
bool isReadCompression(int compression) {
    constexpr std::array kRead = {
        COMPRESSION_NONE,          COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3,
        COMPRESSION_CCITTFAX4,     COMPRESSION_LZW,      COMPRESSION_JPEG,
        COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE,  COMPRESSION_PACKBITS};
    return std::ranges::find(kRead, compression) != kRead.end();
}

int tagOf(TIFF* tiff, std::uint32_t tag) {
    std::uint16_t value = 0;
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : 0;
}

// Gray or RGB in rows of 8 or 16 bits: read row by row, so nothing
// but the picture is held. libtiff's own conversion to RGBA takes
// what is left: palettes, tiles, planes, ink, YCbCr, transparency.
struct PlainLayout {
    int channels;
    int bytesPerSample;
    bool zeroIsWhite;
};

std::optional<PlainLayout> plainLayoutOf(TIFF* tiff) {
    const int photometric = tagOf(tiff, TIFFTAG_PHOTOMETRIC);
    const int channels = tagOf(tiff, TIFFTAG_SAMPLESPERPIXEL);
    const int bits = tagOf(tiff, TIFFTAG_BITSPERSAMPLE);
    const bool gray =
        photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
    const bool fits = (gray && channels == 1) || (photometric == PHOTOMETRIC_RGB && channels == 3);
    if (!fits || (bits != 8 && bits != 16) || TIFFIsTiled(tiff) ||
        tagOf(tiff, TIFFTAG_SAMPLEFORMAT) != SAMPLEFORMAT_UINT ||
        (channels > 1 && tagOf(tiff, TIFFTAG_PLANARCONFIG) != PLANARCONFIG_CONTIG))
        return std::nullopt;
    return PlainLayout{channels, bits / 8, photometric == PHOTOMETRIC_MINISWHITE};
}

void narrow(const std::vector<unsigned char>& wide, unsigned char* row, int samples) {
    for (int i = 0; i < samples; ++i) {
        std::uint16_t sample = 0;
        std::memcpy(&sample, wide.data() + std::ptrdiff_t{i} * 2, sizeof sample);
        row[i] = static_cast<unsigned char>((sample + 128) / 257);
    }
}

bool readPlainRows(TIFF* tiff, const PlainLayout& layout, const base::PixelStore& pixels) {
    const int samples = pixels.width() * layout.channels;
    const tmsize_t rowBytes = tmsize_t{samples} * layout.bytesPerSample;
    if (TIFFScanlineSize(tiff) != rowBytes)
        return false;
    std::vector<unsigned char> wide(layout.bytesPerSample == 2 ? static_cast<std::size_t>(rowBytes)
                                                               : 0);
    for (int y = 0; y < pixels.height(); ++y) {
        unsigned char* row = pixels.bytes(y);
        if (TIFFReadScanline(tiff, wide.empty() ? row : wide.data(),
                             static_cast<std::uint32_t>(y)) != 1)
            return false;
        if (!wide.empty())
            narrow(wide, row, samples);
        if (layout.zeroIsWhite)
            std::transform(row, row + samples, row,
                           [](int value) { return static_cast<unsigned char>(255 - value); });
    }
    return true;
}

// libtiff's word for a pixel is a number; layOnWhite() takes bytes.
void orderBytes(unsigned char* row, int width) {
    for (int x = 0; x < width; ++x, row += 4) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, row, sizeof pixel);
        row[0] = static_cast<unsigned char>(TIFFGetR(pixel));
        row[1] = static_cast<unsigned char>(TIFFGetG(pixel));
        row[2] = static_cast<unsigned char>(TIFFGetB(pixel));
        row[3] = static_cast<unsigned char>(TIFFGetA(pixel));
    }
}

bool readConverted(TIFF* tiff, const base::PixelStore& pixels) {
    // Asking for the orientation that the file has leaves the rows as they are stored.
    if (TIFFReadRGBAImageOriented(tiff, static_cast<std::uint32_t>(pixels.width()),
                                  static_cast<std::uint32_t>(pixels.height()),
                                  reinterpret_cast<std::uint32_t*>(pixels.bytes()),
                                  tagOf(tiff, TIFFTAG_ORIENTATION), 1) != 1)
        return false;
    for (int y = 0; y < pixels.height(); ++y) {
        orderBytes(pixels.bytes(y), pixels.width());
        layOnWhite(pixels.bytes(y), pixels.width(), Alpha::premultiplied);
    }
    return true;
}

// What libtiff holds beside the RGBA picture: one strip or tile, of each plane.
std::int64_t partBytes(TIFF* tiff) {
    const auto part = static_cast<std::int64_t>(std::min<std::uint64_t>(
        TIFFIsTiled(tiff) ? TIFFTileSize64(tiff) : TIFFStripSize64(tiff), INT64_MAX / 8));
    const bool planes = tagOf(tiff, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    return planes ? part * std::min(tagOf(tiff, TIFFTAG_SAMPLESPERPIXEL), 4) : part;
}

// Thumbnails and masks are no pages, unless the file begins with one.
bool isOwnPage(TIFF* tiff) {
    std::uint32_t type = 0;
    TIFFGetField(tiff, TIFFTAG_SUBFILETYPE, &type);
    return (type & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) == 0;
}

bool toNextPage(TIFF* tiff) {
    do {
        if (TIFFReadDirectory(tiff) != 1)
            return false;
    } while (!isOwnPage(tiff));
    return true;
}

}  // namespace

int countTiffPages(std::span<const std::byte> file) {
    Source source{.file = file};
    const Tiff tiff = openTiff(source);
    if (!tiff)
        return 1;
    int pages = 1;
    while (toNextPage(tiff.get()))
        ++pages;
    const bool endsDamaged = source.complaint.front() != '\0';
    return endsDamaged ? pages + 1 : pages;
}

ImageResult decodeTiff(std::span<const std::byte> file, int page) {
    Source source{.file = file};
    const Tiff tiff = openTiff(source);
    if (!tiff)
        return errorFor(source);
    for (int at = 0; at < page; ++at) {
        if (!toNextPage(tiff.get()))
            return source.complaint.front() == '\0' ? ImageError{"the TIFF file has no such page"}
                                                    : errorFor(source);
    }
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height);
    if (auto error = checkSize(width, height))
        return *std::move(error);
    const int compression = tagOf(tiff.get(), TIFFTAG_COMPRESSION);
    if (!isReadCompression(compression))
        return decodingError(Fault::unsupported, "TIFF",
                             "compression " + std::to_string(compression));

    const auto plain = plainLayoutOf(tiff.get());
    const int pixelBytes = plain ? plain->channels : 4;
    if (auto error = checkMemory(std::int64_t{width} * height * pixelBytes +
                                 (plain ? 0 : partBytes(tiff.get()))))
        return *std::move(error);
    base::PixelStore pixels(static_cast<int>(width), static_cast<int>(height), pixelBytes);
    if (!(plain ? readPlainRows(tiff.get(), *plain, pixels) : readConverted(tiff.get(), pixels)))
        return errorFor(source);
    return std::move(pixels).toImage(pixelBytes == 1 ? PixelFormat::gray8 : PixelFormat::rgb8,
                                     orientationFromTag(tagOf(tiff.get(), TIFFTAG_ORIENTATION)));
}

}  // namespace kestrelid::imagefile
