#include "base/ExitGate.h"

#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <thread>

namespace kestrelid::base {
namespace {

using namespace std::chrono_literals;

std::atomic<bool> hasLeft = false;

// Registered before the gate, so that it runs after it.
void endWell() {
    std::_Exit(hasLeft ? 7 : 1);
}

// A process with a worker inside that leaves only once it is interrupted. Its last static is made
// after the gate, as libraries make them when they are first used.
[[noreturn]] void endWithAWorkerInside() {
    std::atexit(endWell);
    std::promise<void> isInside;
    std::thread([&] {
        std::promise<void> interrupted;
        {
            const ExitGate::Pass outer;
            const ExitGate::Pass pass([&] { interrupted.set_value(); });
            isInside.set_value();
            interrupted.get_future().wait();
            std::this_thread::sleep_for(50ms);  // long enough to be missed by who does not wait
            hasLeft = ExitGate::isClosed() && !ExitGate::Pass();
        }
    }).detach();
    isInside.get_future().wait();
    std::exit(2);
}

// A worker that ends the process itself.
[[noreturn]] void endFromInside() {
    std::atexit(endWell);
    ExitGate::guard();
    std::thread([] {
        const ExitGate::Pass pass;
        hasLeft = true;
        std::exit(2);
    }).join();
    std::_Exit(1);
}

TEST(ExitGateDeathTest, TheEndWaitsForWorkersInside) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(endWithAWorkerInside(), testing::ExitedWithCode(7), "");
    EXPECT_EXIT(endFromInside(), testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace kestrelid::base
