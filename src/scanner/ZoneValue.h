#pragma once

#include <kestrelid/ZoneTracker.h>

#include <QVariant>

namespace kestrelid::scanner {

// The zone in view as an object of JavaScript, or null; docs/guides/zone.md tells its properties.
// Personal data: never log it.
[[nodiscard]] QVariant zoneValue(const LiveZone& live);

}  // namespace kestrelid::scanner
