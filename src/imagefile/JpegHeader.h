#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kestrelid::imagefile {

// What stands in a JPEG before its first scan (ITU-T T.81, Annex B).
struct JpegHeader {
    int width = 0;
    int height = 0;
    int components = 0;
    std::int64_t coefficientBytes =
        0;  // what libjpeg keeps of the whole picture; 0 if one pass over it is enough
    bool hasAdobeMarker = false;
    std::span<const std::byte> scans;  // from the first scan's header to the end of the file
    std::span<const std::byte> exif;   // with its lead; empty: none
};

// Whether the marker that ends a picture is missing from its scans.
[[nodiscard]] bool endsEarly(const JpegHeader& header);

// Nothing if the file ends before the first scan, or if a scan comes before a frame.
[[nodiscard]] std::optional<JpegHeader> parseJpegHeader(std::span<const std::byte> file);

}  // namespace kestrelid::imagefile
