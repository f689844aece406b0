#include "vision/SideBySide.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <stdexcept>

namespace kestrelid::vision {
namespace {

TEST(SideBySide, DoesEachPartOnceOnAnyNumberOfThreads) {
    for (const int threads : {-1, 0, 1, 2, 8}) {
        for (const std::size_t count : {0u, 1u, 5u}) {
            std::array<std::atomic<int>, 6> done{};
            sideBySide(count, threads, [&](std::size_t index) { ++done.at(index); });
            for (std::size_t index = 0; index < done.size(); ++index)
                EXPECT_EQ(done[index], index < count) << threads << " threads, part " << index;
        }
    }
}

TEST(SideBySide, ThrowsWhatAPartThrewAndBeginsNoOther) {
    for (const int threads : {1, 2}) {
        std::atomic<std::size_t> begun = 0;
        const auto work = [&](std::size_t) {
            ++begun;
            throw std::runtime_error("part");
        };
        EXPECT_THROW(sideBySide(100, threads, work), std::runtime_error);
        EXPECT_LE(begun, static_cast<std::size_t>(threads));
    }
}

}  // namespace
}  // namespace kestrelid::vision
