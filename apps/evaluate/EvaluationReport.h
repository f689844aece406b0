#pragma once

#include "apps/evaluate/Statistics.h"

#include <string>
#include <vector>

namespace kestrelid::evaluation {

// All that one run of the evaluation found.
struct Evaluation {
    std::string manifest;
    std::vector<LabelledPicture> pictures;
    std::vector<Measurement> measurements;  // at least one
    OverlapSummary overlap;
    std::vector<Disagreement> disagreements;
};

// The table for people: a line for each combination, then the outlines and whether the efforts
// agree.
[[nodiscard]] std::string reportAsTable(const Evaluation& evaluation);

// A line for each picture and combination: verdict, area of the outline, its overlap with the known
// one, keywords matched, delay. Tells whether a miss comes from the outline or from the text.
[[nodiscard]] std::string picturesAsTable(const Evaluation& evaluation);

// Everything, pictures included, as one JSON object.
[[nodiscard]] std::string reportAsJson(const Evaluation& evaluation);

}  // namespace kestrelid::evaluation
