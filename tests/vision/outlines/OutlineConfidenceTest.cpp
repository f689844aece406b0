#include "vision/outlines/OutlineConfidence.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kestrelid::vision {
namespace {

struct DoubtCase {
    const char* name;
    std::vector<WeighedOutline> outlines;
    bool leavesDoubt;
    bool isUncertain;
};

WeighedOutline square(float side, double confidence, float left = 0.0F) {
    return {{{{left, 0.0F}, {left + side, 0.0F}, {left + side, side}, {left, side}}}, confidence};
}

class Doubt : public testing::TestWithParam<DoubtCase> {};

TEST_P(Doubt, asksForMoreOnlyWhereItMayHelp) {
    const DoubtCase& row = GetParam();
    EXPECT_EQ(leavesDoubt(row.outlines, {640, 480}), row.leavesDoubt);
    EXPECT_EQ(isUncertain(row.outlines), row.isUncertain);
}

INSTANTIATE_TEST_SUITE_P(
    , Doubt,
    testing::Values(
        DoubtCase{"nothing", {}, false, false},
        DoubtCase{"clearPage", {square(300, 0.99)}, false, false},
        DoubtCase{"likelyPage", {square(300, 0.9)}, true, false},
        DoubtCase{"unlikelyPage", {square(300, 0.5)}, true, true},
        DoubtCase{"noise", {square(300, 0.02)}, false, false},
        DoubtCase{"largerInDoubt", {square(100, 0.99), square(300, 0.1)}, true, false},
        DoubtCase{"largerNoise", {square(100, 0.99), square(300, 0.02)}, false, false},
        DoubtCase{"smallerInDoubt", {square(300, 0.99), square(150, 0.5)}, false, false},
        DoubtCase{
            "smallerClear", {square(300, 0.99), square(100, 0.98), square(80, 0.5)}, false, false},
        // A box ends at the picture: 160 of 300 pixels show.
        DoubtCase{"mostlyOutside", {square(250, 0.99), square(300, 0.5, 480)}, true, false},
        DoubtCase{"almostAllOutside", {square(250, 0.99), square(300, 0.5, 600)}, false, false}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace kestrelid::vision
