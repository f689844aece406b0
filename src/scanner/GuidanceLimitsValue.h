#pragma once

#include <kestrelid/Guidance.h>

#include <QVariant>

namespace kestrelid::scanner {

// Limits from an object of JavaScript or a map, whose properties are named as in GuidanceLimits
// (`hold` in seconds); what it does not name stays as it is by default.
[[nodiscard]] GuidanceLimits guidanceLimits(const QVariant& value);

}  // namespace kestrelid::scanner
