#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>

namespace kestrelid::base {

// How sharp and how bright a picture is, from the grey values of some of its rows.
class GreyStatistics {
public:
    // The next value of a row, 0..255.
    void add(int grey) {
        ++values_[static_cast<std::size_t>(grey)];
        if (before_ >= 0)
            ++changes_[static_cast<std::size_t>(std::abs(grey - before_))];
        before_ = grey;
    }
    void endRow() { before_ = -1; }

    // The largest step between rows that still looks at enough of a picture of that size.
    [[nodiscard]] static int rowStep(int width, int height);

    // All are shares, 0..1, and 0 without values.
    [[nodiscard]] double sharpness() const;  // of the contrast: what the sharpest edges take in one
                                             // step
    [[nodiscard]] double brightness() const;         // the mean
    [[nodiscard]] double clippedHighlights() const;  // of the values: as bright as can be

private:
    using Histogram = std::array<std::int64_t, 256>;

    [[nodiscard]] static std::int64_t total(const Histogram& histogram);
    [[nodiscard]] static int quantile(const Histogram& histogram, double share);

    Histogram values_{};
    Histogram changes_{};
    int before_ = -1;
};

}  // namespace kestrelid::base
