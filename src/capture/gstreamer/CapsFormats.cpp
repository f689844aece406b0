#include "capture/gstreamer/CapsFormats.h"

#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace kestrelid::capture {

namespace {

struct Size {
    int width;
    int height;
};

constexpr std::array kCommonSizes = {
    Size{640, 480},   Size{800, 600},   Size{960, 540},   Size{1280, 720},  Size{1280, 960},
    Size{1600, 1200}, Size{1920, 1080}, Size{2592, 1944}, Size{3840, 2160}, Size{4032, 3024}};
constexpr FrameRate kCommonRate{.numerator = 30, .denominator = 1};

// Calls visit for value, or for each element if it is a list.
template <typename Visit>
void forEach(const GValue* value, Visit visit) {
    if (!value)
        return;
    if (!GST_VALUE_HOLDS_LIST(value))
        return visit(value);
    for (guint index = 0; index < gst_value_list_get_size(value); ++index)
        visit(gst_value_list_get_value(value, index));
}

bool admits(const GValue* value, int length) {
    bool admitted = false;
    forEach(value, [&](const GValue* one) {
        if (G_VALUE_HOLDS_INT(one)) {
            admitted |= g_value_get_int(one) == length;
        } else if (GST_VALUE_HOLDS_INT_RANGE(one)) {
            const int least = gst_value_get_int_range_min(one);
            admitted |= length >= least && length <= gst_value_get_int_range_max(one) &&
                        (length - least) % std::max(1, gst_value_get_int_range_step(one)) == 0;
        }
    });
    return admitted;
}

// Single values and the ends of ranges.
std::vector<int> ends(const GValue* value) {
    std::vector<int> lengths;
    forEach(value, [&](const GValue* one) {
        if (G_VALUE_HOLDS_INT(one)) {
            lengths.push_back(g_value_get_int(one));
        } else if (GST_VALUE_HOLDS_INT_RANGE(one)) {
            lengths.push_back(gst_value_get_int_range_min(one));
            lengths.push_back(gst_value_get_int_range_max(one));
        }
    });
    return lengths;
}

bool hasRange(const GValue* value) {
    bool found = false;
    forEach(value, [&](const GValue* one) { found |= GST_VALUE_HOLDS_INT_RANGE(one); });
    return found;
}

std::vector<Size> sizesIn(const GstStructure* structure) {
    constexpr int kLargestSide = 20'000;  // an end of "any size" is no size
    constexpr int kSmallestSide = 16;
    const GValue* width = gst_structure_get_value(structure, "width");
    const GValue* height = gst_structure_get_value(structure, "height");
    std::vector<Size> sizes;
    const auto add = [&](int x, int y) {
        if (std::min(x, y) >= kSmallestSide && std::max(x, y) <= kLargestSide)
            sizes.push_back({x, y});
    };
    if (!hasRange(width) && !hasRange(height)) {
        for (const int x : ends(width)) {
            for (const int y : ends(height))
                add(x, y);
        }
        return sizes;
    }
    for (const Size& size : kCommonSizes) {
        if (admits(width, size.width) && admits(height, size.height))
            add(size.width, size.height);
    }
    const std::vector<int> widths = ends(width);
    const std::vector<int> heights = ends(height);
    if (!widths.empty() && !heights.empty())
        add(*std::max_element(widths.begin(), widths.end()),
            *std::max_element(heights.begin(), heights.end()));
    return sizes;
}

FrameRate rateOf(const GValue* value) {
    return {.numerator = gst_value_get_fraction_numerator(value),
            .denominator = gst_value_get_fraction_denominator(value)};
}

std::vector<FrameRate> ratesIn(const GstStructure* structure) {
    std::vector<FrameRate> rates;
    forEach(gst_structure_get_value(structure, "framerate"), [&](const GValue* one) {
        if (GST_VALUE_HOLDS_FRACTION(one)) {
            rates.push_back(rateOf(one));
        } else if (GST_VALUE_HOLDS_FRACTION_RANGE(one)) {
            const FrameRate least = rateOf(gst_value_get_fraction_range_min(one));
            const FrameRate most = rateOf(gst_value_get_fraction_range_max(one));
            if (least.perSecond() <= kCommonRate.perSecond() &&
                kCommonRate.perSecond() <= most.perSecond())
                rates.push_back(kCommonRate);
            constexpr double kFastest = 240.0;  // the end of "any rate" is no rate
            if (most.perSecond() <= kFastest)
                rates.push_back(most);
        }
    });
    if (rates.empty())
        rates.push_back({});
    return rates;
}

struct EncodingName {
    Encoding encoding;
    const char* caps;
};

constexpr std::array kEncodings = {EncodingName{Encoding::raw, "video/x-raw"},
                                   EncodingName{Encoding::jpeg, "image/jpeg"},
                                   EncodingName{Encoding::h264, "video/x-h264"}};

std::optional<Encoding> encodingOf(const GstStructure* structure) {
    for (const EncodingName& name : kEncodings) {
        if (gst_structure_has_name(structure, name.caps))
            return name.encoding;
    }
    return std::nullopt;
}

// Layouts of raw pixels that GStreamer converts, or one without a name for what is encoded.
std::vector<std::string> layoutsIn(const GstStructure* structure, Encoding encoding) {
    if (encoding != Encoding::raw)
        return {""};
    std::vector<std::string> layouts;
    forEach(gst_structure_get_value(structure, "format"), [&](const GValue* one) {
        if (!G_VALUE_HOLDS_STRING(one))
            return;
        const char* name = g_value_get_string(one);
        const GstVideoFormat format = gst_video_format_from_string(name);
        if (format != GST_VIDEO_FORMAT_UNKNOWN && format != GST_VIDEO_FORMAT_ENCODED)
            layouts.emplace_back(name);
    });
    return layouts;
}

// Frames in a graphics processor's memory cannot be read.
bool isInPlainMemory(const GstCaps* caps, guint index) {
    const GstCapsFeatures* features = gst_caps_get_features(caps, index);
    return !features || gst_caps_features_is_any(features) ||
           gst_caps_features_contains(features, GST_CAPS_FEATURE_MEMORY_SYSTEM_MEMORY);
}

}  // namespace

std::vector<VideoFormat> formatsIn(const GstCaps* caps) {
    std::vector<VideoFormat> formats;
    for (guint index = 0; caps && index < gst_caps_get_size(caps); ++index) {
        const GstStructure* structure = gst_caps_get_structure(caps, index);
        const std::optional<Encoding> encoding = encodingOf(structure);
        if (!encoding || !isInPlainMemory(caps, index))
            continue;
        const std::vector<std::string> layouts = layoutsIn(structure, *encoding);
        const std::vector<FrameRate> rates = ratesIn(structure);
        for (const Size& size : sizesIn(structure)) {
            for (const std::string& layout : layouts) {
                for (const FrameRate& rate : rates) {
                    VideoFormat format{.width = size.width,
                                       .height = size.height,
                                       .rate = rate,
                                       .encoding = *encoding,
                                       .layout = layout};
                    if (std::find(formats.begin(), formats.end(), format) == formats.end())
                        formats.push_back(std::move(format));
                }
            }
        }
    }
    return formats;
}

PhotoDimensions sizeIn(const GstCaps* caps) {
    PhotoDimensions size;
    const GstStructure* structure = caps ? gst_caps_get_structure(caps, 0) : nullptr;
    const bool isTold = structure && gst_structure_get_int(structure, "width", &size.width) &&
                        gst_structure_get_int(structure, "height", &size.height);
    return isTold && size.width > 0 && size.height > 0 ? size : PhotoDimensions{};
}

bool isOf(const GstCaps* caps, const VideoFormat& format) {
    const PhotoDimensions wanted{.width = format.width, .height = format.height};
    return sizeIn(caps) == wanted && encodingOf(gst_caps_get_structure(caps, 0)) == format.encoding;
}

CapsHandle capsFor(const VideoFormat& format) {
    const auto* name = std::ranges::find(kEncodings, format.encoding, &EncodingName::encoding);
    CapsHandle caps(gst_caps_new_simple(name->caps, "width", G_TYPE_INT, format.width, "height",
                                        G_TYPE_INT, format.height, nullptr));
    if (format.rate.numerator > 0)
        gst_caps_set_simple(caps.get(), "framerate", GST_TYPE_FRACTION, format.rate.numerator,
                            format.rate.denominator, nullptr);
    if (!format.layout.empty())
        gst_caps_set_simple(caps.get(), "format", G_TYPE_STRING, format.layout.c_str(), nullptr);
    return caps;
}

}  // namespace kestrelid::capture
