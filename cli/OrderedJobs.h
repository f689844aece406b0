#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrelid::cli {

// How far work may run ahead of the outcome whose turn it is: outcomes that wait for a slow one
// stay few.
inline constexpr std::size_t kRunAhead = 256;

// Calls work(worker, index) for every index below count, on up to `workers` threads, each with its
// own worker number below `workers`. Hands each outcome to deliver(index, outcome) on the calling
// thread in order of index, as soon as its turn comes, and tells finished(number) there how many
// are done. work must not throw.
template <typename Work, typename Deliver, typename Finished>
void runInOrder(std::size_t count, std::size_t workers, Work work, Deliver deliver,
                Finished finished) {
    using Outcome = std::invoke_result_t<Work&, std::size_t, std::size_t>;
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::size_t, Outcome> waiting;
    std::size_t next = 0;
    std::size_t delivered = 0;

    const auto run = [&](std::size_t worker) {
        std::unique_lock lock(mutex);
        while (true) {
            changed.wait(lock, [&] { return next >= count || next < delivered + kRunAhead; });
            if (next >= count)
                return;
            const std::size_t index = next++;
            lock.unlock();
            Outcome outcome = work(worker, index);
            lock.lock();
            waiting.emplace(index, std::move(outcome));
            changed.notify_all();
        }
    };

    std::vector<std::jthread> threads;
    // Leaving early, by an exception of deliver: the threads end after the picture at hand.
    struct Stop {
        std::mutex& mutex;
        std::condition_variable& changed;
        std::size_t& next;
        std::size_t count;
        ~Stop() {
            const std::lock_guard lock(mutex);
            next = count;
            changed.notify_all();
        }
    } const stop{mutex, changed, next, count};
    for (std::size_t worker = 0; worker < std::min(workers, count); ++worker)
        threads.emplace_back(run, worker);

    std::size_t told = 0;
    std::unique_lock lock(mutex);
    while (delivered < count) {
        changed.wait(lock, [&] { return delivered + waiting.size() > told; });
        told = delivered + waiting.size();
        lock.unlock();
        finished(told);
        lock.lock();
        for (auto turn = waiting.begin(); turn != waiting.end() && turn->first == delivered;
             turn = waiting.begin()) {
            auto outcome = waiting.extract(turn);
            lock.unlock();
            deliver(outcome.key(), std::move(outcome.mapped()));
            lock.lock();
            ++delivered;
            changed.notify_all();
        }
    }
}

}  // namespace kestrelid::cli
