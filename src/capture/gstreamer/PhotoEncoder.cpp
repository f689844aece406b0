#include "capture/gstreamer/PhotoEncoder.h"

#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/PixelConversion.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/JpegCodec.h"
#include "imagefile/JpegOrientation.h"

#include <exception>
#include <optional>
#include <utility>

namespace kestrelid::capture {

namespace {

constexpr int kQuality = 95;  // percent

bool fits(const PhotoDimensions& size, const PhotoDimensions& bound) {
    return scaledInto(size, bound) == size;
}

// Scaled into bound, if it is larger.
std::optional<Bitmap> within(const Bitmap& bitmap, const PhotoDimensions& bound) {
    const PhotoDimensions size{.width = bitmap.width(), .height = bitmap.height()};
    return fits(size, bound) ? bitmap : convertToBgra(bitmap, scaledInto(size, bound));
}

FinishedPhoto photoOf(imagefile::FileBytes file, Orientation orientation) {
    if (!file)
        return tl::unexpected(file.error());
    if (orientation != Orientation::up)
        file = imagefile::withOrientation(*file, orientation);
    return CapturedPhoto{.fileDataRepresentation = *std::move(file)};
}

FinishedPhoto photoOf(const std::optional<Bitmap>& bitmap, Orientation orientation,
                      const PhotoSettings& settings) {
    if (!bitmap)
        return tl::unexpected(ImageError{"the camera's pixels cannot be converted"});
    if (settings.acceptsImage)
        return CapturedPhoto{.fileDataRepresentation = {}, .image = Image(*bitmap, orientation)};
    return photoOf(imagefile::encodeJpeg(*bitmap, kQuality), orientation);
}

FinishedPhoto photoOf(JpegStill still, Orientation orientation, const PhotoSettings& settings) {
    if (fits(still.size, settings.maxPhotoDimensions))
        return photoOf(std::move(still.file), orientation);
    const ImageResult decoded = imagefile::decodeJpeg(still.file, {});
    if (const auto* error = std::get_if<ImageError>(&decoded))
        return tl::unexpected(*error);
    return photoOf(within(*std::get<Image>(decoded).bitmap(), settings.maxPhotoDimensions),
                   orientation, settings);
}

}  // namespace

FinishedPhoto finishPhoto(Still still, const PhotoSettings& settings) noexcept {
    const PhotoDimensions& bound = settings.maxPhotoDimensions;
    try {
        if (const auto* bitmap = std::get_if<Bitmap>(&still.pixels))
            return photoOf(within(*bitmap, bound), still.orientation, settings);
        if (const auto* sample = std::get_if<SampleHandle>(&still.pixels))
            return photoOf(convertToBgra(sample->get(), bound), still.orientation, settings);
        return photoOf(std::get<JpegStill>(std::move(still.pixels)), still.orientation, settings);
    } catch (const std::exception&) {
        return tl::unexpected(imagefile::outOfMemory());
    }
}

}  // namespace kestrelid::capture
