#include "apps/cli/OrderedJobs.h"

#include <gtest/gtest.h>

#include <latch>
#include <stdexcept>

namespace kestrelid::cli {
namespace {

TEST(OrderedJobsTest, DeliversInOrderWhateverEndsFirst) {
    constexpr std::size_t kCount = 400;  // more than may run ahead
    for (const std::size_t workers : {1, 5}) {
        // The first piece ends last of those that may start beside it.
        std::latch others(workers > 1 ? kRunAhead - 1 : 0);
        std::size_t delivered = 0;
        std::size_t told = 0;
        std::vector<std::atomic_flag> isBusy(workers);
        runInOrder(
            kCount, workers,
            [&](std::size_t worker, std::size_t index) {
                EXPECT_FALSE(isBusy.at(worker).test_and_set()) << "two pieces at once";
                if (index == 0)
                    others.wait();
                else if (index < kRunAhead && workers > 1)
                    others.count_down();
                isBusy[worker].clear();
                return index * index;
            },
            [&](std::size_t index, std::size_t square) {
                EXPECT_EQ(index, delivered++);
                EXPECT_EQ(square, index * index);
            },
            [&](std::size_t number) {
                EXPECT_GT(number, told);
                told = number;
            });
        EXPECT_EQ(delivered, kCount);
        EXPECT_EQ(told, kCount);
    }
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
