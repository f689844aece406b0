#include "scanner/AspectFill.h"
#include "screens/UprightTransform.h"

#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace kestrelid {
namespace {

TEST(AspectFill, KeepsTheMiddle) {
    using scanner::aspectFillCrop;
    EXPECT_EQ(aspectFillCrop({1280, 720}, {90, 160}), QRectF(437.5, 0, 405, 720));
    EXPECT_EQ(aspectFillCrop({720, 1280}, {160, 90}), QRectF(0, 437.5, 720, 405));
    EXPECT_EQ(aspectFillCrop({1280, 720}, {0, 180}), QRectF()) << "nowhere to draw";
    EXPECT_EQ(aspectFillCrop({0, 0}, {320, 180}), QRectF()) << "nothing to draw";
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
