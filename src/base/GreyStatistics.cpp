#include "base/GreyStatistics.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace kestrelid::base {

int GreyStatistics::rowStep(int width, int height) {
    constexpr double kPixelsLookedAt = 500'000.0;
    const double pixels = static_cast<double>(width) * height;
    return std::max(1, static_cast<int>(std::ceil(pixels / kPixelsLookedAt)));
}

double GreyStatistics::sharpness() const {
    const int contrast = quantile(values_, 0.995) - quantile(values_, 0.005);
    return contrast > 0 ? std::min(1.0, static_cast<double>(quantile(changes_, 0.995)) / contrast)
                        : 0.0;
}

double GreyStatistics::brightness() const {
    double sum = 0.0;
    for (std::size_t value = 0; value < values_.size(); ++value)
        sum += static_cast<double>(value) * static_cast<double>(values_[value]);
    return sum / 255.0 / static_cast<double>(std::max<std::int64_t>(1, total(values_)));
}

double GreyStatistics::clippedHighlights() const {
    return static_cast<double>(values_[255]) /
           static_cast<double>(std::max<std::int64_t>(1, total(values_)));
}

std::int64_t GreyStatistics::total(const Histogram& histogram) {
    return std::accumulate(histogram.begin(), histogram.end(), std::int64_t{0});
}

// The value below which that share lies.
int GreyStatistics::quantile(const Histogram& histogram, double share) {
    const auto wanted = static_cast<std::int64_t>(share * static_cast<double>(total(histogram)));
    std::int64_t seen = 0;
    int value = 0;
    while (value < 255 && (seen += histogram[static_cast<std::size_t>(value)]) <= wanted)
        ++value;
    return value;
}

}  // namespace kestrelid::base
