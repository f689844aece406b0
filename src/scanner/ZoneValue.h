#pragma once

#include <kestrelid/ZoneTracker.h>

#include <QVariant>

namespace kestrelid::scanner {

// The zone in view as an object of JavaScript, or null; docs/guides/zone.md tells its properties.
// Personal data: never log it.
[[nodiscard]] QVariant zoneValue(const LiveZone& live);

// The same for a zone that was joined from so many frames.
[[nodiscard]] QVariant zoneValue(const MachineReadableZone& zone, bool isStrict, int frames);

}  // namespace kestrelid::scanner
