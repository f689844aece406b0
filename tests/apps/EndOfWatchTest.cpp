#include "apps/cli/EndOfWatch.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace kestrelid::cli {
namespace {

TEST(EndOfWatchDeathTest, FirstSignalIsAnEndAndTheSecondKillsAsDoesOneAfterIt) {
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
        EXPECT_EXIT((EndOfWatch(), std::raise(number)), testing::KilledBySignal(number), "");
    }
}

}  // namespace
}  // namespace kestrelid::cli
