#include "apps/cli/EndOfWatch.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <thread>

namespace kestrelid::cli {
namespace {

TEST(EndOfWatchTest, GivesWhatAnotherThreadAnnouncesAndLeavesSignalsAsTheyWere) {
    {
        EndOfWatch end;
        const std::jthread other([&] { end.announce(ExitStatus::inputFailed); });
        EXPECT_EQ(end.wait(), ExitStatus::inputFailed);
    }
    sigset_t blocked;
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGINT), 0);
    EXPECT_EQ(sigismember(&blocked, SIGTERM), 0);
}

TEST(EndOfWatchDeathTest, FirstSignalIsAnEndAndTheSecondKills) {
    for (const int number : {SIGINT, SIGTERM}) {
        EXPECT_EXIT(
            {
                EndOfWatch end;
                std::raise(number);
                if (end.wait() != ExitStatus::done)
                    std::_Exit(3);
                std::raise(number);
                std::_Exit(4);
            },
            testing::KilledBySignal(number), "");
    }
}

}  // namespace
}  // namespace kestrelid::cli
