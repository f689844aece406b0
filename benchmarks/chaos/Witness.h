#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace kestrelid::chaos {

using Seconds = double;

// Counts seconds in looks, so that a process that is stopped, or a machine that has no time for it,
// is not taken for a camera that is late. Thread: any.
class AwakeClock {
public:
    AwakeClock();
    [[nodiscard]] Seconds now() const { return static_cast<double>(nanoseconds_) * 1e-9; }

private:
    std::atomic<std::int64_t> nanoseconds_ = 0;
    std::jthread thread_;
};

// Remembers what happened, and tells what should not have. Thread: any.
class Witness {
public:
    Witness(const AwakeClock& clock, unsigned seed) : clock_(clock), seed_(seed) {}

    void begin(int round) { round_ = round; }
    void note(const std::string& event);

    // Prints the finding, the seed, the round, and the last events.
    void find(const std::string& finding);

    [[nodiscard]] int findings() const { return findings_; }

private:
    const AwakeClock& clock_;
    const unsigned seed_;
    std::mutex mutex_;
    std::deque<std::string> last_;
    std::atomic<int> round_ = 0;
    std::atomic<int> findings_ = 0;
};

// The largest of what it was given, and what that was. Thread: any.
class Longest {
public:
    void add(Seconds seconds, const std::string& what);
    [[nodiscard]] std::string text() const;

private:
    mutable std::mutex mutex_;
    Seconds seconds_ = 0.0;
    std::string what_;
};

}  // namespace kestrelid::chaos
