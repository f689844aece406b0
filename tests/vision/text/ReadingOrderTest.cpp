#include "vision/text/ReadingOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace kestrelid::vision {
namespace {

TEST(ReadingOrder, DoesNotDependOnTheOrderGiven) {
    // As they should be read: centre x, centre y, width, height.
    const std::pair<const char*, std::vector<LineExtent>> rows[] = {
        {"oneBelowAnother", {{50, 20, 80, 20}, {50, 50, 80, 20}, {50, 80, 80, 20}}},
        {"columnsShareRows",
         {{50, 20, 80, 20}, {200, 22, 80, 20}, {50, 50, 80, 20}, {200, 49, 80, 20}}},
        {"rowsThatClimb",
         {{50, 60, 80, 20}, {150, 50, 80, 20}, {50, 90, 80, 20}, {150, 80, 80, 20}}},
        {"largeTitleBesideSmallLabel", {{60, 40, 100, 40}, {170, 44, 80, 14}, {60, 80, 100, 14}}},
        {"tightLinesStayApart", {{100, 20, 180, 20}, {100, 31, 180, 20}, {100, 42, 180, 20}}}};
    EXPECT_TRUE(readingOrder({}).empty());
    for (const auto& [name, lines] : rows) {
        SCOPED_TRACE(name);
        std::vector<std::size_t> shuffle(lines.size());
        std::iota(shuffle.begin(), shuffle.end(), std::size_t{0});
        do {
            std::vector<LineExtent> given;
            for (const std::size_t index : shuffle)
                given.push_back(lines[index]);
            std::vector<std::size_t> read;
            for (const std::size_t index : readingOrder(given))
                read.push_back(shuffle[index]);
            ASSERT_EQ(read.size(), lines.size());
            ASSERT_TRUE(std::is_sorted(read.begin(), read.end())) << testing::PrintToString(read);
        } while (std::next_permutation(shuffle.begin(), shuffle.end()));
    }
}

}  // namespace
}  // namespace kestrelid::vision
