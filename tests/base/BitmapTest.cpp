#include <kestrelid/Bitmap.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace kestrelid::base {

namespace {

std::shared_ptr<const std::byte[]> zeros(std::size_t size) {
    return std::make_shared<std::byte[]>(size);
}

struct WrapCase {
    const char* name;
    int width, height;
    std::ptrdiff_t stride;
    PixelFormat format;
    std::size_t size;
    bool accepted;
};

TEST(BitmapWrap, AcceptsOnlyRowsInsideThePixels) {
    // Sizes are claims here: nothing reads beyond the one byte that the pointer has.
    const WrapCase cases[] = {
        {"last row without padding", 3, 2, 16, PixelFormat::bgra8, 16 + 12, true},
        {"one byte short", 3, 2, 16, PixelFormat::bgra8, 16 + 11, false},
        {"rows overlap", 3, 2, 8, PixelFormat::rgb8, 100, false},
        {"negative stride", 3, 2, -9, PixelFormat::rgb8, 100, false},
        {"no width", 0, 1, 4, PixelFormat::gray8, 4, false},
        {"negative height", 1, -1, 4, PixelFormat::gray8, 4, false},
        {"row longer than int", INT_MAX, 1, std::ptrdiff_t{INT_MAX} * 4, PixelFormat::bgra8,
         SIZE_MAX, true},
        {"stride times height wraps to 0", 1, 5, PTRDIFF_MAX / 2 + 1, PixelFormat::gray8, 100,
         false},
    };
    for (const WrapCase& c : cases) {
        EXPECT_EQ(Bitmap::wrap(c.width, c.height, c.stride, c.format, zeros(1), c.size).has_value(),
                  c.accepted)
            << c.name;
    }
    EXPECT_FALSE(Bitmap::wrap(1, 1, 1, PixelFormat::gray8, nullptr, 1));
}

TEST(BitmapCrop, IsTheIntersection) {
    struct CropCase {
        PixelRect region;
        std::optional<PixelRect> inside;
    };
    const CropCase cases[] = {
        {{2, 3, 4, 5}, PixelRect{2, 3, 4, 5}},
        {{-3, -2, 5, 5}, PixelRect{0, 0, 2, 3}},
        {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, std::nullopt},
        {{-5, -5, INT_MAX, INT_MAX}, PixelRect{0, 0, 10, 8}},
        {{9, 7, INT_MAX, INT_MAX}, PixelRect{9, 7, 1, 1}},
        {{10, 0, 1, 1}, std::nullopt},
        {{-4, 0, 4, 4}, std::nullopt},
        {{3, 3, 2, -1}, std::nullopt},
    };
    const auto whole = Bitmap::wrap(10, 8, 33, PixelFormat::rgb8, zeros(33 * 8), 33 * 8);
    ASSERT_TRUE(whole);
    for (const CropCase& c : cases) {
        SCOPED_TRACE(testing::Message() << c.region.x << "," << c.region.y << " " << c.region.width
                                        << "x" << c.region.height);
        const auto part = whole->crop(c.region);
        ASSERT_EQ(part.has_value(), c.inside.has_value());
        if (!part)
            continue;
        EXPECT_EQ(part->width(), c.inside->width);
        EXPECT_EQ(part->height(), c.inside->height);
        EXPECT_EQ(part->row(0), whole->row(c.inside->y) + c.inside->x * 3);
        EXPECT_EQ(part->stride(), whole->stride());
    }
}

TEST(BitmapCrop, OfACropCountsFromItsCornerAndKeepsThePixelsAlive) {
    auto pixels = std::make_shared<std::byte[]>(20 * 10);
    pixels[20 * 5 + 7] = std::byte{42};
    auto whole = Bitmap::wrap(20, 10, 20, PixelFormat::gray8, pixels, 20 * 10);
    const auto part = whole->crop({4, 3, 10, 6})->crop({3, 2, 100, 100});
    whole.reset();
    pixels.reset();
    ASSERT_TRUE(part);
    EXPECT_EQ(part->width(), 7);
    EXPECT_EQ(part->height(), 4);
    EXPECT_EQ(part->row(0)[0], std::byte{42});
}

}  // namespace
}  // namespace kestrelid::base
