#include "benchmarks/chaos/Witness.h"

#include <algorithm>
#include <cstdio>

namespace kestrelid::chaos {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kEventsKept = 20;
constexpr auto kLook = 5ms;
constexpr auto kLongestLook = 50ms;  // what takes longer was no time for this program

}  // namespace

AwakeClock::AwakeClock()
    : thread_([this](const std::stop_token& stop) {
          auto last = std::chrono::steady_clock::now();
          while (!stop.stop_requested()) {
              std::this_thread::sleep_for(kLook);
              const auto now = std::chrono::steady_clock::now();
              nanoseconds_ += std::min<std::chrono::nanoseconds>(now - last, kLongestLook).count();
              last = now;
          }
      }) {}

void Witness::note(const std::string& event) {
    char line[160];
    std::snprintf(line, sizeof line, "%8.3f %s", clock_.now(), event.c_str());
    const std::lock_guard lock(mutex_);
    last_.emplace_back(line);
    if (last_.size() > kEventsKept)
        last_.pop_front();
}

void Witness::find(const std::string& finding) {
    ++findings_;
    const std::lock_guard lock(mutex_);
    std::printf("FOUND at %.3f s, seed %u, round %d: %s\n", clock_.now(), seed_, round_.load(),
                finding.c_str());
    for (const std::string& event : last_)
        std::printf("    %s\n", event.c_str());
    std::fflush(stdout);
}

void Longest::add(Seconds seconds, const std::string& what) {
    const std::lock_guard lock(mutex_);
    if (seconds <= seconds_)
        return;
    seconds_ = seconds;
    what_ = what;
}

std::string Longest::text() const {
    char number[32];
    const std::lock_guard lock(mutex_);
    std::snprintf(number, sizeof number, "%.2f s", seconds_);
    return what_.empty() ? number : number + (" (" + what_ + ")");
}

}  // namespace kestrelid::chaos
