#include "vision/outlines/OutlineSelection.h"

#include <gtest/gtest.h>

namespace kestrelid::vision {

namespace {

OutlineCandidate candidate(cv::Rect2f box, double confidence, double printKept) {
    const cv::Point2f end = box.br();
    return {{box.tl(), {end.x, box.y}, end, {box.x, end.y}}, confidence, printKept};
}

TEST(OutlineSelection, KeepsTheLikely) {
    const struct {
        const char* name;
        std::vector<OutlineCandidate> candidates;
        std::vector<double> keptConfidences;
    } rows[] = {
        {"nearDuplicates",
         {candidate({10, 10, 300, 200}, 0.8, 1), candidate({12, 9, 300, 202}, 0.9, 1)},
         {0.9}},
        {"frameInsidePage",
         {candidate({10, 10, 300, 200}, 0.9, 1), candidate({30, 30, 100, 100}, 0.85, 0.3)},
         {0.9}},
        {"deskAroundPage",
         {candidate({60, 60, 200, 140}, 0.9, 0.95), candidate({10, 10, 350, 250}, 0.88, 1)},
         {0.9}},
        {"fullPictureAroundPage",
         {candidate({60, 60, 200, 140}, 0.75, 0.95), candidate({0, 0, 400, 300}, 0.8, 1)},
         {0.75}},
        {"pageAroundPanelThatLeavesPrintOut",
         {candidate({60, 60, 200, 140}, 0.9, 0.5), candidate({10, 10, 350, 250}, 0.85, 1)},
         {0.9, 0.85}},
        {"doubtfulElsewhere",
         {candidate({10, 10, 150, 100}, 0.9, 0.9), candidate({200, 10, 180, 280}, 0.5, 0.1)},
         {0.9}},
        {"twoPages",
         {candidate({10, 10, 150, 100}, 0.9, 0.5), candidate({200, 10, 180, 280}, 0.8, 0.5)},
         {0.9, 0.8}},
        {"belowTheFloor", {candidate({10, 10, 150, 100}, 0.39, 1)}, {}},
        {"tooWide", {candidate({10, 10, 350, 100}, 0.9, 1)}, {}},
        {"tooHigh", {candidate({10, 10, 100, 250}, 0.9, 1)}, {}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<double> kept;
        for (const OutlineCandidate& each : selectOutlines(row.candidates, {})) {
            kept.push_back(each.confidence);
        }
        EXPECT_EQ(kept, row.keptConfidences);
    }
}

}  // namespace

}  // namespace kestrelid::vision
