#pragma once

#include "apps/cli/ExitStatus.h"

#include <atomic>

namespace kestrelid::cli {

// Waits for the end of something that runs on other threads, and for SIGINT and SIGTERM, which are
// read from a descriptor: no handler runs. Create it before any thread: threads inherit the blocked
// signals.
class EndOfWatch {
public:
    EndOfWatch();
    EndOfWatch(const EndOfWatch&) = delete;
    EndOfWatch& operator=(const EndOfWatch&) = delete;
    ~EndOfWatch();

    // Thread: any.
    void announce(ExitStatus status);

    // Returns the status announced, or done after a signal. From then on a second signal ends the
    // process.
    [[nodiscard]] ExitStatus wait();

private:
    int signals_;    // descriptor
    int announced_;  // likewise
    std::atomic<ExitStatus> status_{ExitStatus::done};
};

}  // namespace kestrelid::cli
