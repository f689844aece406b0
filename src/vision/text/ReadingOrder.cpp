#include "vision/text/ReadingOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace kestrelid::vision {
namespace {

// Two lines stand beside each other if their centres differ by less than this part of the smaller
// height.
constexpr float kSameRow = 0.6f;

float gapBetween(const LineExtent& a, const LineExtent& b) {
    return std::abs(a.centerX - b.centerX) - (a.width + b.width) / 2.0f;
}

struct Row {
    std::vector<std::size_t> members;
    float centerY = 0.0f;
};

// The member beside line, nearest along the row. Nothing if line covers a member and so stands
// above or below it.
const LineExtent* neighbour(const Row& row, const LineExtent& line,
                            std::span<const LineExtent> lines) {
    const LineExtent* nearest = nullptr;
    float least = std::numeric_limits<float>::max();
    for (const std::size_t index : row.members) {
        const float gap = gapBetween(lines[index], line);
        if (gap < -0.5f * std::min(lines[index].width, line.width))
            return nullptr;
        if (gap < least) {
            least = gap;
            nearest = &lines[index];
        }
    }
    return nearest;
}

}  // namespace

std::vector<std::size_t> readingOrder(std::span<const LineExtent> lines) {
    std::vector<std::size_t> fromTop(lines.size());
    std::iota(fromTop.begin(), fromTop.end(), std::size_t{0});
    std::stable_sort(fromTop.begin(), fromTop.end(), [&](std::size_t a, std::size_t b) {
        return lines[a].centerY < lines[b].centerY;
    });

    std::vector<Row> rows;
    for (const std::size_t index : fromTop) {
        const LineExtent& line = lines[index];
        Row* best = nullptr;
        float leastOffset = std::numeric_limits<float>::max();
        for (auto& row : rows) {
            const LineExtent* beside = neighbour(row, line, lines);
            if (!beside)
                continue;
            const float offset =
                std::abs(beside->centerY - line.centerY) / std::min(beside->height, line.height);
            if (offset < kSameRow && offset < leastOffset) {
                leastOffset = offset;
                best = &row;
            }
        }
        if (!best)
            best = &rows.emplace_back();
        best->members.push_back(index);
    }

    for (auto& row : rows) {
        std::stable_sort(row.members.begin(), row.members.end(), [&](std::size_t a, std::size_t b) {
            return lines[a].centerX < lines[b].centerX;
        });
        for (const std::size_t index : row.members)
            row.centerY += lines[index].centerY / static_cast<float>(row.members.size());
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& a, const Row& b) { return a.centerY < b.centerY; });

    std::vector<std::size_t> order;
    for (const auto& row : rows)
        order.insert(order.end(), row.members.begin(), row.members.end());
    return order;
}

}  // namespace kestrelid::vision
