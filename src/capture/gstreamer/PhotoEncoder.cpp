#include "capture/gstreamer/PhotoEncoder.h"

#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/PixelConversion.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/JpegCodec.h"
#include "imagefile/JpegOrientation.h"

#include <exception>
#include <optional>
#include <span>
#include <utility>

namespace kestrelid::capture {

namespace {

constexpr int kQuality = 95;  // percent

bool fits(const PhotoDimensions& size, const PhotoDimensions& bound) {
    return scaledInto(size, bound) == size;
}

imagefile::FileBytes encode(const Bitmap& bitmap, const PhotoDimensions& bound,
                            Orientation orientation) {
    const PhotoDimensions size{.width = bitmap.width(), .height = bitmap.height()};
    std::optional<Bitmap> scaled;
    if (!fits(size, bound)) {
        scaled = convertToBgra(bitmap, scaledInto(size, bound));
        if (!scaled)
            return tl::unexpected(imagefile::outOfMemory());
    }
    imagefile::FileBytes file = imagefile::encodeJpeg(scaled ? *scaled : bitmap, kQuality);
    if (file && orientation != Orientation::up)
        return imagefile::withOrientation(*file, orientation);
    return file;
}

imagefile::FileBytes fromJpeg(GstSample* sample, const PhotoDimensions& bound,
                              Orientation orientation) {
    GstMapInfo map;
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return tl::unexpected(ImageError{"the camera's frame cannot be read"});
    const auto* first = reinterpret_cast<const std::byte*>(map.data);
    const std::vector<std::byte> own(first, first + map.size);
    gst_buffer_unmap(buffer, &map);

    PhotoDimensions size;
    const GstStructure* structure = gst_caps_get_structure(gst_sample_get_caps(sample), 0);
    gst_structure_get_int(structure, "width", &size.width);
    gst_structure_get_int(structure, "height", &size.height);
    if (fits(size, bound))
        return orientation == Orientation::up ? own : imagefile::withOrientation(own, orientation);
    const ImageResult decoded = imagefile::decodeJpeg(own, {});
    if (const auto* error = std::get_if<ImageError>(&decoded))
        return tl::unexpected(*error);
    return encode(*std::get<Image>(decoded).bitmap(), bound, orientation);
}

imagefile::FileBytes fromSample(GstSample* sample, const PhotoDimensions& bound,
                                Orientation orientation) {
    const GstCaps* caps = gst_sample_get_caps(sample);
    if (gst_structure_has_name(gst_caps_get_structure(caps, 0), "image/jpeg"))
        return fromJpeg(sample, bound, orientation);
    const std::optional<Bitmap> bitmap = convertToBgra(sample, bound);
    if (!bitmap)
        return tl::unexpected(ImageError{"the camera's pixels cannot be converted"});
    return encode(*bitmap, {}, orientation);
}

}  // namespace

imagefile::FileBytes encodePhoto(const Still& still, const PhotoSettings& settings) noexcept {
    try {
        if (const auto* bitmap = std::get_if<Bitmap>(&still.pixels))
            return encode(*bitmap, settings.maxPhotoDimensions, still.orientation);
        return fromSample(std::get<SampleHandle>(still.pixels).get(), settings.maxPhotoDimensions,
                          still.orientation);
    } catch (const std::exception&) {
        return tl::unexpected(imagefile::outOfMemory());
    }
}

}  // namespace kestrelid::capture
