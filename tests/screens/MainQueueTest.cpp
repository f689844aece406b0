#include "tests/screens/ShownScreen.h"

#include <kestrelid/screens/MainQueue.h>

#include <chrono>
#include <gtest/gtest.h>
#include <numeric>
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
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    bool isOnMain = true;
    std::thread([&] {
        for (const int block : expected)
            queue->async([&, block] {
                isOnMain = isOnMain && QThread::currentThread() == qApp->thread();
                order.push_back(block);
            });
    }).join();
    EXPECT_TRUE(order.empty()) << "a block ran before async() returned to the event loop";
    ASSERT_TRUE(waitFor([&] { return order.size() == 100; }));
    EXPECT_TRUE(isOnMain);
    EXPECT_EQ(order, expected);
}

TEST(QtMainQueue, DelaysInOrderAndNeverEarlyAlsoAfterItsRelease) {
    auto queue = makeQtMainQueue();
    std::vector<int> order;
    const auto start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration last{};
    std::thread([&] {
        queue->asyncAfter(1s, [&] {
            last = std::chrono::steady_clock::now() - start;
            order.push_back(2);
        });
    }).join();
    queue->asyncAfter(20ms, [&] { order.push_back(1); });
    queue->asyncAfter(-1s, [&] {
        order.push_back(0);
        queue.reset();  // what waits runs all the same
    });
    ASSERT_TRUE(waitFor([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
    EXPECT_GE(last, 1s);
}

}  // namespace
}  // namespace kestrelid::test
