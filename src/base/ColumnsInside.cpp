#include "base/ColumnsInside.h"

#include <algorithm>

namespace kestrelid::base {

std::pair<int, int> columnsInside(const std::array<NormalizedPoint, 4>& corners, int row, int width,
                                  int height) {
    const double y = 1.0 - (row + 0.5) / height;
    double left = 1.0;
    double right = 0.0;
    for (std::size_t index = 0; index < 4; ++index) {
        const NormalizedPoint& a = corners[index];
        const NormalizedPoint& b = corners[(index + 1) % 4];
        if ((a.y <= y) == (b.y <= y))
            continue;
        const double x = a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x);
        left = std::min(left, x);
        right = std::max(right, x);
    }
    const auto column = [width](double x) {
        return static_cast<int>(std::clamp(x, 0.0, 1.0) * width);
    };
    return {column(left), column(right)};
}

}  // namespace kestrelid::base
