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
    constexpr scanner::Argb white = scanner::kWhite;
    constexpr scanner::Argb gray = scanner::kGray;
    constexpr auto noAccess = scanner::SpokenStatus::accessRequired;
    constexpr auto inView = scanner::SpokenStatus::passportInView;
    using enum scanner::CameraArea;
    for (const auto& row : std::vector<Row>{
             {{false, false, true}, accessRequired, green, gray, false, noAccess},
             {{false, true, true}, accessRequired, green, white, true, noAccess},
             {{true, false, false}, preview, white, gray, false, scanner::SpokenStatus::notReady},
             {{true, false, true}, preview, green, gray, false, inView},
             {{true, true, false}, preview, white, white, true, scanner::SpokenStatus::ready},
         }) {
        SCOPED_TRACE(testing::Message() << row.state.isAuthorized << row.state.isSessionReady
                                        << row.state.isDocumentDetected);
        EXPECT_EQ(scanner::cameraArea(row.state), row.area);
        EXPECT_EQ(scanner::bracketColor(row.state), row.bracket);
        EXPECT_EQ(scanner::captureDiscColor(row.state), row.disc);
        EXPECT_EQ(scanner::isCaptureAllowed(row.state), row.allowed);
        EXPECT_EQ(scanner::spokenStatus(row.state), row.spoken);
    }
}

// The pixel tests draw brackets that fit their frame.
TEST(RoundedCornerOverlayShape, ArmsShorterThanTheBendRunBackwards) {
    // Start, start of the bend, corner, end of the bend, end; clockwise.
    using Points = std::vector<scanner::ShapePoint>;
    std::vector<Points> all;
    for (const auto& path : scanner::RoundedCornerOverlayShape{10, 25}.path({100, 50, 130, 60}))
        all.push_back({path[0].end, path[1].end, path[2].control, path[2].end, path[3].end});
    EXPECT_EQ(all, (std::vector<Points>{{{100, 60}, {100, 75}, {100, 50}, {125, 50}, {110, 50}},
                                        {{120, 50}, {105, 50}, {130, 50}, {130, 75}, {130, 60}},
                                        {{130, 50}, {130, 35}, {130, 60}, {105, 60}, {120, 60}},
                                        {{110, 60}, {125, 60}, {100, 60}, {100, 35}, {100, 50}}}));
}

TEST(AspectFill, KeepsTheMiddle) {
    using scanner::aspectFillCrop;
    EXPECT_EQ(aspectFillCrop({1280, 720}, {90, 160}), QRectF(437.5, 0, 405, 720));
    EXPECT_EQ(aspectFillCrop({720, 1280}, {160, 90}), QRectF(0, 437.5, 720, 405));
    EXPECT_EQ(aspectFillCrop({1280, 720}, {320, 180}), QRectF(0, 0, 1280, 720));
    EXPECT_EQ(aspectFillCrop({1280, 720}, {0, 180}), QRectF()) << "nowhere to draw";
    EXPECT_EQ(aspectFillCrop({0, 0}, {320, 180}), QRectF()) << "nothing to draw";
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
