#include <kestrelid/Image.h>

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace kestrelid::base {
namespace {

// Where the pixel shown at x, y stands in stored rows of w x h pixels, for a value of the EXIF tag.
std::pair<int, int> storedPlace(int tag, int x, int y, int w, int h) {
    const std::pair<int, int> places[] = {
        {x, y}, {w - 1 - x, y}, {w - 1 - x, h - 1 - y}, {x, h - 1 - y},
        {y, x}, {y, h - 1 - x}, {w - 1 - y, h - 1 - x}, {w - 1 - y, x}};
    return places[tag - 1];
}

// Every byte differs from its neighbours; a crop, so that rows are longer than the picture is wide.
Bitmap stored(int width, int height, PixelFormat format) {
    const int rowBytes = (width + 3) * bytesPerPixel(format);
    const std::size_t size = static_cast<std::size_t>(rowBytes) * (height + 2);
    auto pixels = std::make_shared<std::byte[]>(size);
    for (std::size_t i = 0; i < size; ++i)
        pixels[i] = static_cast<std::byte>(i * 2654435761u >> 13);
    const auto whole =
        Bitmap::wrap(width + 3, height + 2, rowBytes, format, std::move(pixels), size);
    return whole->crop({1, 2, width, height}).value();
}

TEST(ImageUpright, MovesEveryPixelWhereTheOrientationSays) {
    const std::pair<int, int> sizes[] = {{1, 1}, {5, 1}, {1, 5}, {64, 64}, {131, 70}};
    for (const PixelFormat format : {PixelFormat::bgra8, PixelFormat::rgb8, PixelFormat::gray8}) {
        const int pixel = bytesPerPixel(format);
        for (const auto& [width, height] : sizes) {
            const Bitmap from = stored(width, height, format);
            for (int tag = 1; tag <= 8; ++tag) {
                const Image shown = Image(from, static_cast<Orientation>(tag)).upright();
                ASSERT_TRUE(shown.bitmap());
                EXPECT_EQ(shown.orientation(), Orientation::up);
                const Bitmap& to = *shown.bitmap();
                ASSERT_EQ(to.format(), format);
                ASSERT_EQ(to.width(), tag >= 5 ? height : width) << tag;
                ASSERT_EQ(to.height(), tag >= 5 ? width : height) << tag;
                for (int y = 0; y < to.height(); ++y) {
                    for (int x = 0; x < to.width(); ++x) {
                        const auto [u, v] = storedPlace(tag, x, y, width, height);
                        const auto* place = from.row(v) + u * pixel;
                        ASSERT_EQ(std::memcmp(to.row(y) + x * pixel, place, pixel), 0)
                            << "orientation " << tag << " at " << x << "," << y;
                    }
                }
            }
        }
    }
}

TEST(ImageUpright, SharesPixelsThatStandUprightAndCopesWithNone) {
    const Bitmap bitmap = stored(3, 2, PixelFormat::rgb8);
    EXPECT_EQ(Image(bitmap).upright().bitmap()->row(0), bitmap.row(0));
    EXPECT_FALSE(Image().upright().bitmap());
}

}  // namespace
}  // namespace kestrelid::base
