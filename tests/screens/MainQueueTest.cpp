#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/MainQueue.h>

#include <chrono>
#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QThread>
#include <thread>
#include <vector>

namespace kestrelid::test {
namespace {

using namespace std::chrono_literals;

TEST(QtMainQueue, RunsBlocksOfAnyThreadInOrderOnTheApplicationsThread) {
    const auto queue = makeQtMainQueue();
    std::vector<int> order;
    bool isOnMain = true;
    const auto note = [&](int block) {
        isOnMain = isOnMain && QThread::currentThread() == QCoreApplication::instance()->thread();
        order.push_back(block);
    };
    std::thread([&] {
        for (int block = 0; block < 100; ++block)
            queue->async([&, block] { note(block); });
    }).join();
    EXPECT_TRUE(order.empty()) << "a block ran before async() returned to the event loop";
    ASSERT_TRUE(waitFor([&] { return order.size() == 100; }));
    EXPECT_TRUE(isOnMain);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(QtMainQueue, DelaysInOrderOfTheirDeadlinesAndNeverEarly) {
    auto queue = makeQtMainQueue();
    std::vector<int> order;
    const auto start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration last{};
    std::thread([&] {
        queue->asyncAfter(40ms, [&] {
            last = std::chrono::steady_clock::now() - start;
            order.push_back(2);
        });
    }).join();
    queue->asyncAfter(20ms, [&] { order.push_back(1); });
    queue->asyncAfter(-1s, [&] { order.push_back(0); });
    queue.reset();  // what waits runs all the same
    ASSERT_TRUE(waitFor([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
    EXPECT_GE(last, 40ms);
}

TEST(QtMainQueue, MayBeReleasedByItsOwnBlockAndStillRunsTheRest) {
    auto queue = makeQtMainQueue();
    bool isLastRun = false;
    queue->async([&] { queue.reset(); });
    queue->async([&] { isLastRun = true; });
    EXPECT_TRUE(waitFor([&] { return isLastRun; }));
}

}  // namespace
}  // namespace kestrelid::test
