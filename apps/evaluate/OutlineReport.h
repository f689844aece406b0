#pragma once

#include "apps/evaluate/OutlineComparison.h"

#include <string>
#include <vector>

namespace kestrelid::evaluation {

// A line for each finder and kind: overlap at the median and the 10th percentile, how often an
// outline of 15% of the picture or more was found, and delays.
[[nodiscard]] std::string outlinesAsTable(const std::vector<LabelledPicture>& pictures,
                                          const std::vector<OutlineMeasurement>& measurements);

// A line for each picture and finder.
[[nodiscard]] std::string outlineRowsAsTable(const std::vector<LabelledPicture>& pictures,
                                             const std::vector<OutlineMeasurement>& measurements);

// Everything, pictures included, as one JSON object.
[[nodiscard]] std::string outlinesAsJson(const std::string& manifest,
                                         const std::vector<LabelledPicture>& pictures,
                                         const std::vector<OutlineMeasurement>& measurements);

}  // namespace kestrelid::evaluation
