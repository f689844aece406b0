#include "vision/outlines/OutlineConfidence.h"

#include <gtest/gtest.h>

#include <vector>

namespace kestrelid::vision {
namespace {

WeighedOutline square(float side, double confidence, float left = 0.0F) {
    return {{{{left, 0.0F}, {left + side, 0.0F}, {left + side, side}, {left, side}}}, confidence};
}

TEST(Doubt, asksForMoreOnlyWhereItMayHelp) {
    const struct {
        const char* name;
        std::vector<WeighedOutline> outlines;
        bool leavesDoubt;
    } rows[] = {{"nothing", {}, false},
                {"clearPage", {square(300, 0.99)}, false},
                {"likelyPage", {square(300, 0.9)}, true},
                {"largerInDoubt", {square(100, 0.99), square(300, 0.1)}, true},
                {"largerNoise", {square(100, 0.99), square(300, 0.02)}, false},
                {"smallerInDoubt", {square(300, 0.99), square(150, 0.5)}, false},
                {"smallerClear", {square(300, 0.99), square(100, 0.98), square(80, 0.5)}, false},
                // A box ends at the picture: 160 of 300 pixels show.
                {"mostlyOutside", {square(250, 0.99), square(300, 0.5, 480)}, true},
                {"almostAllOutside", {square(250, 0.99), square(300, 0.5, 600)}, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(leavesDoubt(row.outlines, {640, 480}), row.leavesDoubt);
    }
}

}  // namespace
}  // namespace kestrelid::vision
