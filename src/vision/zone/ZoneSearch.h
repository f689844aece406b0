#pragma once

#include "vision/zone/SeenLine.h"

#include <kestrelid/MachineReadableZone.h>

#include <vector>

namespace kestrelid::vision {

// Lines that stand together as a zone's do.
struct FoundZone {
    ZoneReading reading;   // corners in terms of the picture
    float quality = 0.0f;  // geometric mean of the characters' probabilities
};

// The zones of a view, best first, read one way up and the other.
[[nodiscard]] Expected<std::vector<FoundZone>> searchZones(const LineReader& reader,
                                                           const PictureLevels& picture);

}  // namespace kestrelid::vision
