#include "apps/cli/OrderedJobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <vector>

namespace kestrelid::cli {
namespace {

TEST(OrderedJobsTest, DeliversInOrderWhateverEndsFirst) {
    constexpr std::size_t kCount = 400;  // more than may run ahead
    for (const std::size_t workers : {1, 2, 5}) {
        // The first piece ends last of those that may start beside it.
        std::latch others(workers > 1 ? kRunAhead - 1 : 0);
        std::vector<std::size_t> order;
        std::size_t told = 0;
        runInOrder(
            kCount, workers,
            [&](std::size_t worker, std::size_t index) {
                EXPECT_LT(worker, workers);
                if (index == 0)
                    others.wait();
                else if (index < kRunAhead && workers > 1)
                    others.count_down();
                return index * index;
            },
            [&](std::size_t index, std::size_t square) {
                EXPECT_EQ(square, index * index);
                order.push_back(index);
            },
            [&](std::size_t number) {
                EXPECT_GT(number, told);
                told = number;
            });
        ASSERT_EQ(order.size(), kCount);
        for (std::size_t i = 0; i < kCount; ++i)
            ASSERT_EQ(order[i], i);
        EXPECT_EQ(told, kCount);
    }
}

TEST(OrderedJobsTest, HoldsNoMorePiecesAtOnceThanWorkers) {
    std::atomic<int> atOnce = 0;
    std::atomic<int> most = 0;
    runInOrder(
        200, 3,
        [&](std::size_t, std::size_t) {
            const int now = ++atOnce;
            for (int before = most; before < now && !most.compare_exchange_weak(before, now);) {
            }
            std::this_thread::yield();
            return --atOnce;
        },
        [](std::size_t, int) {}, [](std::size_t) {});
    EXPECT_LE(most, 3);
}

TEST(OrderedJobsTest, EndsItsThreadsWhenDeliveryFails) {
    std::atomic<std::size_t> begun = 0;
    const auto run = [&] {
        runInOrder(
            10'000, 4, [&](std::size_t, std::size_t index) { return ++begun, index; },
            [](std::size_t, std::size_t) { throw std::runtime_error("full"); }, [](std::size_t) {});
    };
    EXPECT_THROW(run(), std::runtime_error);
    EXPECT_LE(begun, kRunAhead + 4);
}

}  // namespace
}  // namespace kestrelid::cli
