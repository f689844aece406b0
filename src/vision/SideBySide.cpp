#include "vision/SideBySide.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrelid::vision {

void sideBySide(std::size_t count, int threads, const std::function<void(std::size_t)>& work) {
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::exception_ptr thrown;
    const auto takeTurns = [&]() noexcept {
        try {
            for (std::size_t index = next++; index < count; index = next++)
                work(index);
        } catch (...) {
            next = count;
            const std::scoped_lock lock(mutex);
            if (!thrown)
                thrown = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> others;
        try {
            for (std::size_t thread = 1; thread < count && static_cast<int>(thread) < threads;
                 ++thread)
                others.emplace_back(takeTurns);
        } catch (const std::exception&) {
            // Those that there are do the work.
        }
        takeTurns();
    }
    if (thrown)
        std::rethrow_exception(thrown);
}

}  // namespace kestrelid::vision
