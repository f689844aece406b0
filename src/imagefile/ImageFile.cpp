#include <kestrelid/ImageFile.h>

#include "imagefile/DecodingLimits.h"
#include "imagefile/FileContents.h"
#include "imagefile/HeifCodec.h"
#include "imagefile/ImageFormat.h"
#include "imagefile/JpegCodec.h"
#include "imagefile/PngCodec.h"
#include "imagefile/TiffCodec.h"
#include "imagefile/WebPCodec.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <utility>

namespace kestrelid {
namespace {

// Whatever stops the libraries, in words that need no memory.
ImageError shortage(const std::exception& error) {
    const bool isThread = dynamic_cast<const std::system_error*>(&error) != nullptr;
    return isThread ? ImageError{"no thread left"} : imagefile::outOfMemory();
}

ImageResult decodeByFormat(std::span<const std::byte> file, const DecodeOptions& options) {
    if (file.size() > kMaximumFileSize)
        return ImageError{std::to_string(file.size()) + " bytes, at most " +
                          std::to_string(kMaximumFileSize) + " are read"};
    const imagefile::ImageFormat format = imagefile::imageFormatOf(file);
    if (options.page != 0 && format != imagefile::ImageFormat::tiff)
        return ImageError{"the file has only one page"};
    switch (format) {
    case imagefile::ImageFormat::jpeg:
        return imagefile::decodeJpeg(file, options);
    case imagefile::ImageFormat::png:
        return imagefile::decodePng(file);
    case imagefile::ImageFormat::webp:
        return imagefile::decodeWebP(file);
    case imagefile::ImageFormat::tiff:
        return imagefile::decodeTiff(file, options.page);
    case imagefile::ImageFormat::heif:
        return imagefile::decodeHeif(file);
    case imagefile::ImageFormat::unknown:
        break;
    }
    return ImageError{imagefile::unknownFormatCause(file)};
}

std::string lowerCaseExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    // ASCII only, whatever the process's locale is.
    std::ranges::transform(extension, extension.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return extension;
}

std::optional<ImageError> encodeAndReplace(const std::filesystem::path& path, const Image& image) {
    const std::string extension = lowerCaseExtension(path);
    const bool jpeg = extension == ".jpg" || extension == ".jpeg";
    if (!jpeg && extension != ".png")
        return ImageError{"pictures are written as .jpg, .jpeg or .png"};
    if (!image.bitmap())
        return ImageError{"the image has no bitmap"};
    const Image upright = image.upright();
    if (!upright.bitmap())
        return imagefile::outOfMemory();
    const Bitmap& bitmap = *upright.bitmap();
    if (bitmap.stride() > std::numeric_limits<int>::max())
        return ImageError{"the picture's rows lie too far apart for the encoder"};

    const imagefile::FileBytes encoded =
        jpeg ? imagefile::encodeJpeg(bitmap) : imagefile::encodePng(bitmap);
    if (!encoded)
        return encoded.error();
    return imagefile::replaceFile(path, *encoded);
}

}  // namespace

ImageResult decodeImage(std::span<const std::byte> file, const DecodeOptions& options) {
    try {
        return decodeByFormat(file, options);
    } catch (const std::exception& error) {
        return shortage(error);
    }
}

bool isImageFormat(std::span<const std::byte> start) noexcept {
    return imagefile::imageFormatOf(start) != imagefile::ImageFormat::unknown;
}

int countPages(std::span<const std::byte> file) noexcept {
    try {
        const bool isTiff = imagefile::imageFormatOf(file) == imagefile::ImageFormat::tiff;
        return isTiff ? imagefile::countTiffPages(file) : 1;
    } catch (const std::exception&) {
        return 1;  // and there will be no memory for it either
    }
}

ImageResult readImage(const std::filesystem::path& path, const DecodeOptions& options) {
    try {
        const imagefile::FileBytes contents = imagefile::readRegularFile(path);
        if (!contents)
            return contents.error();
        return decodeByFormat(*contents, options);
    } catch (const std::exception& error) {
        return shortage(error);
    }
}

std::optional<ImageError> writeImage(const std::filesystem::path& path, const Image& image) {
    try {
        return encodeAndReplace(path, image);
    } catch (const std::exception& error) {
        return shortage(error);
    }
}

}  // namespace kestrelid
