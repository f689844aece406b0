#pragma once

#include "apps/evaluate/Measurement.h"

#include <map>
#include <string>
#include <vector>

namespace kestrelid::evaluation {

// How many pictures of one kind were called passports.
struct KindCount {
    bool isPassport = false;
    std::size_t called = 0;
    std::size_t judged = 0;
};

struct Summary {
    std::map<std::string, KindCount> kinds;  // by kind
    std::size_t failed = 0;                  // pictures without a verdict
    double medianDelay = 0.0;                // milliseconds
    double delayAt90 = 0.0;                  // milliseconds, 90th percentile
};

[[nodiscard]] Summary summarize(const std::vector<LabelledPicture>& pictures,
                                const Measurement& measurement);

// How well the chosen outlines meet the known ones, by their bounding boxes.
struct OverlapSummary {
    std::vector<std::optional<double>> overlaps;  // by picture; none where no outline is known
    std::size_t known = 0;
    std::size_t good = 0;  // at least kGoodOverlap
    double median = 0.0;
    double at10 = 0.0;  // 10th percentile
};

inline constexpr double kGoodOverlap = 0.8;

[[nodiscard]] OverlapSummary overlapSummary(const std::vector<LabelledPicture>& pictures,
                                            const std::vector<PictureRow>& rows);

// The box around corners in pixels of a picture of that size, in terms of the picture.
[[nodiscard]] NormalizedRect normalizedBox(const std::array<PixelPoint, 4>& quad, double width,
                                           double height);

// Area of the intersection by area of the union.
[[nodiscard]] double overlap(const NormalizedRect& a, const NormalizedRect& b);

// The value below which the given part (0..1) of the values lies: the nearest rank. 0 where there
// are none.
[[nodiscard]] double percentile(std::vector<double> values, double part);

// Pictures about which two efforts of one recogniser disagree, which they never should.
struct Disagreement {
    Recognizer recognizer = Recognizer::ppocr;
    std::string name;
};

[[nodiscard]] std::vector<Disagreement> disagreements(const std::vector<LabelledPicture>& pictures,
                                                      const std::vector<Measurement>& measurements);

}  // namespace kestrelid::evaluation
