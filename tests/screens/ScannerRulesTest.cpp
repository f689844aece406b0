#include "scanner/AspectFill.h"
#include "scanner/RoundedCornerOverlayShape.h"
#include "scanner/ScannerDisplay.h"
#include "screens/UprightTransform.h"

#include <gtest/gtest.h>
#include <vector>

namespace kestrelid {
namespace {

TEST(ScannerDisplay, EachStateShowsItsOwn) {
    constexpr scanner::Argb green = 0xff22c55e;
    struct Row {
        scanner::ScannerState state;  // authorized, ready, detected
        scanner::CameraArea area;
        scanner::Argb bracket;
        scanner::Argb disc;
        bool allowed;
        scanner::SpokenStatus spoken;
    };
    using enum scanner::CameraArea;
    const std::vector<Row> rows = {
        {{false, false, false},
         accessRequired,
         scanner::kWhite,
         scanner::kGray,
         false,
         scanner::SpokenStatus::accessRequired},
        {{false, false, true},
         accessRequired,
         green,
         scanner::kGray,
         false,
         scanner::SpokenStatus::accessRequired},
        {{false, true, false},
         accessRequired,
         scanner::kWhite,
         scanner::kWhite,
         true,
         scanner::SpokenStatus::accessRequired},
        {{false, true, true},
         accessRequired,
         green,
         scanner::kWhite,
         true,
         scanner::SpokenStatus::accessRequired},
        {{true, false, false},
         preview,
         scanner::kWhite,
         scanner::kGray,
         false,
         scanner::SpokenStatus::notReady},
        {{true, false, true},
         preview,
         green,
         scanner::kGray,
         false,
         scanner::SpokenStatus::passportInView},
        {{true, true, false},
         preview,
         scanner::kWhite,
         scanner::kWhite,
         true,
         scanner::SpokenStatus::ready},
        {{true, true, true},
         preview,
         green,
         scanner::kWhite,
         true,
         scanner::SpokenStatus::passportInView},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.state.isAuthorized << row.state.isSessionReady
                                        << row.state.isDocumentDetected);
        EXPECT_EQ(scanner::cameraArea(row.state), row.area);
        EXPECT_EQ(scanner::bracketColor(row.state), row.bracket);
        EXPECT_EQ(scanner::captureDiscColor(row.state), row.disc);
        EXPECT_EQ(scanner::isCaptureAllowed(row.state), row.allowed);
        EXPECT_EQ(scanner::spokenStatus(row.state), row.spoken);
    }
}

using Points =
    std::vector<scanner::ShapePoint>;  // start, start of the bend, corner, end of the bend, end

std::vector<Points> brackets(const scanner::RoundedCornerOverlayShape& shape,
                             const scanner::ShapeRect& rect) {
    using enum scanner::PathElement::Kind;
    std::vector<Points> all;
    for (const scanner::CornerPath& path : shape.path(rect)) {
        EXPECT_EQ(path[0].kind, move);
        EXPECT_EQ(path[1].kind, line);
        EXPECT_EQ(path[2].kind, quadraticCurve);
        EXPECT_EQ(path[3].kind, line);
        all.push_back({path[0].end, path[1].end, path[2].control, path[2].end, path[3].end});
    }
    return all;
}

TEST(RoundedCornerOverlayShape, BracketsInOrderClockwise) {
    struct Row {
        const char* name;
        scanner::RoundedCornerOverlayShape shape;
        scanner::ShapeRect rect;
        std::vector<Points> expected;
    };
    const std::vector<Row> rows = {
        {"the scan frame",
         {70, 25},
         {0, 0, 300, 400},
         {{{0, 70}, {0, 25}, {0, 0}, {25, 0}, {70, 0}},
          {{230, 0}, {275, 0}, {300, 0}, {300, 25}, {300, 70}},
          {{300, 330}, {300, 375}, {300, 400}, {275, 400}, {230, 400}},
          {{70, 400}, {25, 400}, {0, 400}, {0, 375}, {0, 330}}}},
        {"elsewhere, arms shorter than the bend",
         {10, 25},
         {100, 50, 130, 60},
         {{{100, 60}, {100, 75}, {100, 50}, {125, 50}, {110, 50}},
          {{120, 50}, {105, 50}, {130, 50}, {130, 75}, {130, 60}},
          {{130, 50}, {130, 35}, {130, 60}, {105, 60}, {120, 60}},
          {{110, 60}, {125, 60}, {100, 60}, {100, 35}, {100, 50}}}},
        {"an empty rectangle",
         {70, 25},
         {0, 0, 0, 0},
         {{{0, 70}, {0, 25}, {0, 0}, {25, 0}, {70, 0}},
          {{-70, 0}, {-25, 0}, {0, 0}, {0, 25}, {0, 70}},
          {{0, -70}, {0, -25}, {0, 0}, {-25, 0}, {-70, 0}},
          {{70, 0}, {25, 0}, {0, 0}, {0, -25}, {0, -70}}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(brackets(row.shape, row.rect), row.expected) << row.name;
}

TEST(AspectFill, KeepsTheMiddle) {
    struct Row {
        const char* name;
        QSizeF picture;
        QSizeF bounds;
        QRectF crop;
    };
    const std::vector<Row> rows = {
        {"wide into tall", {1280, 720}, {90, 160}, {437.5, 0, 405, 720}},
        {"tall into wide", {720, 1280}, {160, 90}, {0, 437.5, 720, 405}},
        {"same shape", {1280, 720}, {320, 180}, {0, 0, 1280, 720}},
        {"nowhere to draw", {1280, 720}, {0, 180}, {}},
        {"nothing to draw", {0, 0}, {320, 180}, {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(scanner::aspectFillCrop(row.picture, row.bounds), row.crop) << row.name;
}

TEST(UprightTransform, PlacesTheStoredTopLeftCorner) {
    struct Row {
        Orientation orientation;
        QPointF topLeft;   // where the first stored pixel's corner is shown
        QPointF topRight;  // where the end of the first stored row is shown
    };
    // 40 by 30 as stored.
    const std::vector<Row> rows = {
        {Orientation::up, {0, 0}, {40, 0}},
        {Orientation::upMirrored, {40, 0}, {0, 0}},
        {Orientation::down, {40, 30}, {0, 30}},
        {Orientation::downMirrored, {0, 30}, {40, 30}},
        {Orientation::leftMirrored, {0, 0}, {0, 40}},
        {Orientation::right, {30, 0}, {30, 40}},
        {Orientation::rightMirrored, {30, 40}, {30, 0}},
        {Orientation::left, {0, 40}, {0, 0}},
    };
    for (const auto& row : rows) {
        const QTransform placed = screens::uprightTransform(row.orientation, {40, 30});
        EXPECT_EQ(placed.map(QPointF(0, 0)), row.topLeft) << static_cast<int>(row.orientation);
        EXPECT_EQ(placed.map(QPointF(40, 0)), row.topRight) << static_cast<int>(row.orientation);
    }
}

}  // namespace
}  // namespace kestrelid
