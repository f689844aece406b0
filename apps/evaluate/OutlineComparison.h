#pragma once

#include "apps/evaluate/EvaluationManifest.h"
#include "apps/evaluate/Measurement.h"

#include <kestrelid/DefaultServices.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrelid::evaluation {

// What one finder made of one picture.
struct OutlineRow {
    std::string error;  // not empty: the picture could not be decoded, or finding failed
    std::optional<double> overlap;  // of the largest outline with the known one; none: not known
    double largest = 0.0;           // area of the largest outline's box, of the picture
    double milliseconds = 0.0;      // of finding alone, on one thread
};

struct OutlineMeasurement {
    OutlineFinder finder = OutlineFinder::networkFirst;
    std::vector<OutlineRow> rows;  // in the manifest's order
};

// Asks one finder for the outlines of all pictures, at full size, one at a time.
[[nodiscard]] OutlineMeasurement measureOutlines(const std::vector<LabelledPicture>& pictures,
                                                 OutlineFinder finder,
                                                 const MeasureOptions& options);

}  // namespace kestrelid::evaluation
