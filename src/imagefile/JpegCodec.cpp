#include "imagefile/JpegCodec.h"

#include "base/PixelStore.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/ExifOrientation.h"
#include "imagefile/JpegHeader.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace kestrelid::imagefile {
namespace {

struct DestroyTurbo {
    void operator()(tjhandle handle) const { tjDestroy(handle); }
};
using Turbo = std::unique_ptr<std::remove_pointer_t<tjhandle>, DestroyTurbo>;

// The smallest of a picture's halves, quarters and eighths that keeps its longer side sufficient.
tjscalingfactor scalingFor(int side, int sufficientSide) {
    constexpr std::array kReductions = {tjscalingfactor{1, 8}, tjscalingfactor{1, 4},
                                        tjscalingfactor{1, 2}};
    for (const tjscalingfactor& reduction : kReductions) {
        if (sufficientSide > 0 && TJSCALED(side, reduction) >= sufficientSide)
            return reduction;
    }
    return {1, 1};
}

// Cameras pad the last scan. The whole picture has been decoded when libjpeg reports the padding.
bool isPaddingBeforeEnd(const std::string& message) {
    return message.find("extraneous bytes before marker 0xd9") != std::string::npos;
}

// Programs that write the Adobe marker store ink upside down: 255 is none.
void turnInkIntoRgb(unsigned char* row, int width, bool inverted) {
    const unsigned char* from = row;
    const auto light = [inverted](int ink) { return inverted ? ink : 255 - ink; };
    for (unsigned char* to = row; width > 0; --width, from += 4) {
        const int black = light(from[3]);
        for (int channel = 0; channel < 3; ++channel)
            *to++ = static_cast<unsigned char>((light(from[channel]) * black + 127) / 255);
    }
}

struct PixelLayout {
    int turboFormat;
    int bytesPerPixel;
    PixelFormat format;
};

PixelLayout layoutFor(int components) {
    switch (components) {
    case 1:
        return {TJPF_GRAY, 1, PixelFormat::gray8};
    case 4:
        return {TJPF_CMYK, 4, PixelFormat::rgb8};
    default:
        return {TJPF_RGB, 3, PixelFormat::rgb8};
    }
}

int turboFormat(PixelFormat format) {
    switch (format) {
    case PixelFormat::bgra8:
        return TJPF_BGRX;
    case PixelFormat::rgb8:
        return TJPF_RGB;
    case PixelFormat::bgr8:
        return TJPF_BGR;
    case PixelFormat::rgba8:
        return TJPF_RGBX;
    case PixelFormat::gray8:
        break;
    }
    return TJPF_GRAY;
}

}  // namespace

ImageResult decodeJpeg(std::span<const std::byte> file, const DecodeOptions& options) {
    const auto header = parseJpegHeader(file);
    if (!header)
        return decodingError(Fault::truncated, "JPEG",
                             "no picture starts before the end of the file");
    if (auto error = checkSize(header->width, header->height))
        return *std::move(error);

    const tjscalingfactor scaling =
        scalingFor(std::max(header->width, header->height), options.sufficientSide);
    const int width = TJSCALED(header->width, scaling);
    const int height = TJSCALED(header->height, scaling);
    const PixelLayout layout = layoutFor(header->components);
    if (auto error = checkMemory(std::int64_t{width} * height * layout.bytesPerPixel +
                                 header->coefficientBytes))
        return *std::move(error);

    const Turbo turbo(tjInitDecompress());
    if (!turbo)
        return outOfMemory();  // it asks for nothing else
    base::PixelStore pixels(width, height, layout.bytesPerPixel);
    // Scans are limited, because a small file can repeat
    // a scan of a large picture hundreds of times.
    const int result =
        tjDecompress2(turbo.get(), reinterpret_cast<const unsigned char*>(file.data()), file.size(),
                      pixels.bytes(), width, static_cast<int>(pixels.stride()), height,
                      layout.turboFormat, TJFLAG_LIMITSCANS);
    if (result != 0) {
        const std::string message = tjGetErrorStr2(turbo.get());
        if (!isPaddingBeforeEnd(message))
            return decodingError(endsEarly(*header) ? Fault::truncated : Fault::damaged, "JPEG",
                                 message);
    }
    if (layout.turboFormat == TJPF_CMYK) {
        for (int y = 0; y < height; ++y)
            turnInkIntoRgb(pixels.bytes(y), width, header->hasAdobeMarker);
    }
    return std::move(pixels).toImage(layout.format, exifOrientation(header->exif));
}

FileBytes encodeJpeg(const Bitmap& bitmap, int quality) {
    const Turbo turbo(tjInitCompress());
    if (!turbo)
        return tl::unexpected(outOfMemory());
    const bool gray = bitmap.format() == PixelFormat::gray8;
    const int format = turboFormat(bitmap.format());
    unsigned char* encoded = nullptr;
    unsigned long size = 0;
    const int result =
        tjCompress2(turbo.get(), reinterpret_cast<const unsigned char*>(bitmap.row(0)),
                    bitmap.width(), static_cast<int>(bitmap.stride()), bitmap.height(), format,
                    &encoded, &size, gray ? TJSAMP_GRAY : TJSAMP_420, quality, 0);
    const std::unique_ptr<unsigned char, decltype(&tjFree)> owner(encoded, &tjFree);
    if (result != 0)
        return tl::unexpected(
            ImageError{std::string("JPEG encoder: ") + tjGetErrorStr2(turbo.get())});
    const auto* bytes = reinterpret_cast<const std::byte*>(encoded);
    return std::vector<std::byte>(bytes, bytes + size);
}

struct JpegFrameDecoder::Handle {
    Turbo turbo{tjInitDecompress()};
};

JpegFrameDecoder::JpegFrameDecoder() : handle_(std::make_unique<Handle>()) {
    if (!handle_->turbo)
        throw std::bad_alloc();
}

JpegFrameDecoder::~JpegFrameDecoder() = default;

bool JpegFrameDecoder::open(std::span<const std::byte> picture, int sufficientSide) {
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(handle_->turbo.get(),
                            reinterpret_cast<const unsigned char*>(picture.data()), picture.size(),
                            &width, &height, &subsampling, &colours) != 0 ||
        checkSize(width, height)) {
        cause_ = "no picture in a frame of motion JPEG";
        return false;
    }
    const tjscalingfactor scaling = scalingFor(std::max(width, height), sufficientSide);
    picture_ = picture;
    width_ = TJSCALED(width, scaling);
    height_ = TJSCALED(height, scaling);
    return true;
}

bool JpegFrameDecoder::decode(std::byte* pixels, std::ptrdiff_t stride, PixelFormat format) {
    const int result =
        tjDecompress2(handle_->turbo.get(), reinterpret_cast<const unsigned char*>(picture_.data()),
                      picture_.size(), reinterpret_cast<unsigned char*>(pixels), width_,
                      static_cast<int>(stride), height_, turboFormat(format), TJFLAG_LIMITSCANS);
    if (result == 0)
        return true;
    const std::string message = tjGetErrorStr2(handle_->turbo.get());
    if (isPaddingBeforeEnd(message))
        return true;
    cause_ = decodingError(Fault::damaged, "motion JPEG", message).cause;
    return false;
}

}  // namespace kestrelid::imagefile
