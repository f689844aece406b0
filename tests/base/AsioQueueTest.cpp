#include "base/AsioQueue.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <vector>

namespace kestrelid::base {
namespace {

using namespace std::chrono_literals;

// Until a block has run that sets done.
void await(std::promise<void>& done) {
    ASSERT_EQ(done.get_future().wait_for(60s), std::future_status::ready);
}

TEST(AsioQueue, OneThreadRunsBlocksInOrderAlsoAfterTheReleaseAndAfterOneThatThrows) {
    std::vector<int> order;
    std::promise<void> released;
    std::promise<void> done;
    {
        AsioQueue queue("serial", 1);
        queue.async([&] { await(released); });
        queue.async([] { throw 42; });
        for (int block = 0; block < 1000; ++block)
            queue.async([&order, block] { order.push_back(block); });
        queue.async([&] { done.set_value(); });
    }
    released.set_value();  // a release that waited would wait for this
    await(done);
    ASSERT_EQ(order.size(), 1000u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(AsioQueue, SeveralThreadsRunBlocksAtOnce) {
    AsioQueue queue("concurrent", 2);
    std::latch both(2);  // each block waits for the other, which one thread could never satisfy
    std::promise<void> done;
    queue.async([&] { both.arrive_and_wait(); });
    queue.async([&] {
        both.arrive_and_wait();
        done.set_value();
    });
    await(done);
}

TEST(AsioQueue, DelaysInOrderOfTheirDeadlines) {
    std::vector<int> order;
    std::promise<void> done;
    const auto start = std::chrono::steady_clock::now();
    AsioQueue queue("serial", 1);
    queue.asyncAfter(1s, [&] {
        order.push_back(2);
        done.set_value();
    });
    queue.asyncAfter(20ms, [&] { order.push_back(1); });
    queue.async([&] { order.push_back(0); });
    await(done);
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1s);
}

TEST(AsioQueue, MayBeReleasedByItsOwnBlockAndStillRunsTheRest) {
    std::promise<void> last;
    auto queue = std::make_unique<AsioQueue>("serial", 1);
    std::promise<void> submitted;
    queue->async([&] {
        await(submitted);
        queue.reset();
    });
    queue->async([&] { last.set_value(); });
    submitted.set_value();
    await(last);
}

}  // namespace
}  // namespace kestrelid::base
