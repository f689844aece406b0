#pragma once

#include "detection/Console.h"

#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/VisionServices.h>

#include <vector>

namespace kestrelid::detection {

// The zones of bitmap, as rules tell them. outlines: as they were found. Failures go to the console
// and count as none.
[[nodiscard]] std::vector<MachineReadableZone>
readZones(ZoneService& service, const Console& console, const Bitmap& bitmap,
          const std::vector<RectangleObservation>& outlines, const ZoneRules& rules);

// Lines that were read in a region of a picture (pixels), in terms of that picture.
[[nodiscard]] std::vector<TextObservation> inPicture(const std::vector<TextObservation>& lines,
                                                     const PixelRect& region,
                                                     const Bitmap& picture);

}  // namespace kestrelid::detection
