#include "scanner/AspectFill.h"
#include "scanner/AutoCapture.h"
#include "scanner/FramePlacement.h"
#include "scanner/OutlineCorners.h"
#include "screens/UprightTransform.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid {
namespace {

TEST(AspectFill, KeepsTheMiddle) {
    using scanner::aspectFillCrop;
    EXPECT_EQ(aspectFillCrop({1280, 720}, {90, 160}), QRectF(437.5, 0, 405, 720));
    EXPECT_EQ(aspectFillCrop({720, 1280}, {160, 90}), QRectF(0, 437.5, 720, 405));
    EXPECT_EQ(aspectFillCrop({1280, 720}, {0, 180}), QRectF()) << "nowhere to draw";
    EXPECT_EQ(aspectFillCrop({0, 0}, {320, 180}), QRectF()) << "nothing to draw";
}

TEST(FramePlacement, PointsOfTheFrameAreWhereTheyAreSeen) {
    using enum Orientation;
    struct Row {
        Orientation orientation;
        bool isMirrored;
        QSizeF bounds;
        bool isWhole;
        QPointF share;
        QPointF place;
    };
    for (const Row& row : std::vector<Row>{
             {up, false, {640, 360}, false, {0.25, 0.5}, {160, 180}},
             {up, true, {640, 360}, false, {0.25, 0.5}, {480, 180}},
             {right, false, {360, 640}, false, {0.25, 0}, {360, 160}},
             {right, true, {360, 640}, false, {0.25, 0}, {0, 160}},
             {left, false, {360, 640}, false, {0.25, 0}, {0, 480}},
             {down, false, {640, 360}, false, {0.25, 0}, {480, 360}},
             {leftMirrored, false, {360, 640}, false, {0.25, 0}, {0, 160}},
             // Cut at both sides; above and below there is room.
             {up, false, {320, 360}, false, {0.25, 0}, {0, 0}},
             {up, false, {640, 400}, true, {0, 0}, {0, 20}},
             {right, true, {640, 640}, true, {0, 1}, {500, 0}},
         }) {
        const scanner::FrameShape shape{{1280, 720}, row.orientation, row.isMirrored};
        const auto placement = scanner::placeFrame(shape, row.bounds, row.isWhole);
        const QPointF place = scanner::mapFromFrame(shape, placement, row.share);
        EXPECT_LT((place - row.place).manhattanLength(), 1e-6)
            << static_cast<int>(row.orientation) << row.isMirrored << row.isWhole << ": "
            << place.x() << " " << place.y();
    }
    EXPECT_EQ(scanner::mapFromFrame({}, scanner::placeFrame({}, {10, 10}, true), {1, 1}), QPointF())
        << "before the first frame";
}

TEST(OutlineCorners, GoTheShortestWay) {
    const scanner::OutlineCorners page{QPointF(0, 0), {1, 0}, {1, 1}, {0, 1}};
    const scanner::OutlineCorners turned{QPointF(1, 0.1), {1, 1}, {0, 1}, {0, 0}};
    const scanner::OutlineCorners expected{QPointF(0, 0), {1, 0.1}, {1, 1}, {0, 1}};
    EXPECT_EQ(scanner::turnedTowards(page, turned), expected);
}

// A look for each letter: a good one, a page that moves (s), a passport of which no page is found
// (p), a page that is no passport (d), a camera that is not ready (n), nothing (-); the person says
// no (c), the screen is shown anew (a). X: a photo is due.
TEST(AutoCapture, OncePerPageAfterASecond) {
    struct Row {
        std::string looks;
        std::string due;
        double pause = 0.125;
    };
    for (const Row& row : std::vector<Row>{
             {"ggggggggggggggggggggg", "........X............"},
             {"ggg", "..X", 0.75},  // a slow machine
             {"ggg--------", "..........."},
             {"ggsgggggg", "........X"},
             {"ggsspgggg", "........."},  // too long a gap
             {"ggsspggggggggg", ".............X"},
             {"ddddddddddddd", "............."},
             {"nnnnnnnnnnggggggggg", "..................X"},
             {"gggcgggggggggggg", "................"},
             {"gggc-ggggggggg", ".............X"},
             {"gggcpggggggggg", ".............."},  // its page was not seen for a moment
             {"ggggggggg-ggggggggg", "........X.........X"},
             {"gggggggggaggggggggg", "........X........X."},
         }) {
        scanner::AutoCapture capture;
        std::string due;
        double seconds = 1000.0;
        for (const char look : row.looks) {
            seconds += row.pause;
            if (look == 'c')
                capture.spend();
            else if (look == 'a')
                capture.appear();
            const std::string seen(1, look == 'c' || look == 'a' ? 'g' : look);
            const bool isDue = capture.see({.isReady = seen != "n",
                                            .isPassportInView = seen.find_first_of("gspn") == 0,
                                            .hasPage = seen.find_first_of("gsdn") == 0,
                                            .isSteady = seen.find_first_of("gdn") == 0},
                                           scanner::AutoCapture::Time(seconds));
            due += isDue ? 'X' : '.';
        }
        EXPECT_EQ(due, row.due) << row.looks;
        EXPECT_LE(capture.progress(), 1.0);
    }
}

TEST(UprightTransform, PlacesTheFirstStoredRow) {
    // 40 by 30 as stored: where the row begins and ends.
    const std::map<Orientation, std::pair<QPointF, QPointF>> rows = {
        {Orientation::up, {{0, 0}, {40, 0}}},
        {Orientation::upMirrored, {{40, 0}, {0, 0}}},
        {Orientation::down, {{40, 30}, {0, 30}}},
        {Orientation::downMirrored, {{0, 30}, {40, 30}}},
        {Orientation::leftMirrored, {{0, 0}, {0, 40}}},
        {Orientation::right, {{30, 0}, {30, 40}}},
        {Orientation::rightMirrored, {{30, 40}, {30, 0}}},
        {Orientation::left, {{0, 40}, {0, 0}}},
    };
    for (const auto& [orientation, row] : rows) {
        const QTransform placed = screens::uprightTransform(orientation, {40, 30});
        EXPECT_EQ(std::pair(placed.map(QPointF(0, 0)), placed.map(QPointF(40, 0))), row)
            << static_cast<int>(orientation);
    }
}

}  // namespace
}  // namespace kestrelid
