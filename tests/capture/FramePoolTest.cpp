#include "capture/gstreamer/FramePool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace kestrelid::capture {
namespace {

constexpr int kMost = 3;

// Every byte has value; rows lie further apart than they are long.
Bitmap frame(int width, int height, int value) {
    const std::ptrdiff_t stride = std::ptrdiff_t{4} * width + 12;
    const auto size = static_cast<std::size_t>(stride * height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::memset(pixels.get(), value, size);
    return *Bitmap::wrap(width, height, stride, PixelFormat::bgra8, pixels, size);
}

TEST(FramePool, HasSoManyBitmapsAndUsesTheirMemoryAgain) {
    FramePool pool(kMost);
    std::set<const std::byte*> places;
    for (int round = 0; round < 5; ++round) {
        std::vector<Bitmap> held;
        for (int index = 0; index < kMost; ++index) {
            const auto copy = pool.copy(frame(40, 30, 10 * round + index));
            ASSERT_TRUE(copy);
            held.push_back(*copy);
            places.insert(copy->row(0));
        }
        EXPECT_FALSE(pool.copy(frame(40, 30, 1)));
        EXPECT_FALSE(pool.copy(frame(80, 60, 1))) << "another size, but all are held";
        for (int index = 0; index < kMost; ++index)
            EXPECT_EQ(held[static_cast<std::size_t>(index)].row(29)[159],
                      std::byte(10 * round + index));
        held.pop_back();
        EXPECT_TRUE(pool.copy(frame(40, 30, 1)));
    }
    EXPECT_EQ(places.size(), 3u);
}

// The thread sanitizer sees here what no lock guards.
TEST(FramePool, GivesNoMemoryToTwoThreadsAtOnce) {
    FramePool pool(kMost);
    std::vector<std::thread> threads;
    for (int value = 0; value < 4; ++value)
        threads.emplace_back([&pool, mine = frame(8, 1, value)] {
            for (int round = 0; round < 2000; ++round) {
                const auto copy = pool.copy(mine);
                EXPECT_TRUE(!copy || std::memcmp(copy->row(0), mine.row(0), 32) == 0);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    std::vector<Bitmap> held;
    while (const auto copy = pool.copy(frame(8, 1, 1)))
        held.push_back(*copy);
    EXPECT_EQ(held.size(), 3u) << "what they gave back was counted wrong";
}

TEST(FramePool, TakesOtherMemoryForAnotherSizeWhichMayOutliveIt) {
    auto pool = std::make_unique<FramePool>(kMost);
    const auto small = pool->copy(frame(40, 30, 1));
    const auto large = pool->copy(frame(400, 300, 2));
    ASSERT_TRUE(small && large);
    pool.reset();
    EXPECT_EQ(large->width(), 400);
    EXPECT_EQ(large->row(299)[1599], std::byte{2});
    EXPECT_EQ(small->row(29)[159], std::byte{1});
}

}  // namespace
}  // namespace kestrelid::capture
