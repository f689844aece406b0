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

// How many jobs may be ahead of the outcome that is due next, so that few outcomes wait for a slow
// one.
inline constexpr std::size_t kRunAhead = 256;

// Calls work(worker, index) for every index below count, on up to `workers` threads, each with its
// own worker number below `workers`. Hands each outcome to deliver(index, outcome) on the calling
// thread in order of index, as soon as its turn comes, and calls finished(number) there with the
// number of jobs done. work must not throw.
template <typename Work, typename Deliver, typename Finished>
void runInOrder(std::size_t count, std::size_t workers, Work work, Deliver deliver,
                Finished finished) {
    using Outcome = std::invoke_result_t<Work&, std::size_t, std::size_t>;
    std::mutex mutex;
    std::condition_variable changed;
    using Waiting = std::map<std::size_t, Outcome>;
    Waiting waiting;
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
    // If deliver throws, the threads end after their present picture.
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
    const auto isTurn = [&] { return !waiting.empty() && waiting.begin()->first == delivered; };
    while (delivered < count) {
        changed.wait(lock, [&] { return isTurn() || delivered + waiting.size() > told; });
        const std::size_t done = delivered + waiting.size();
        auto outcome = isTurn() ? waiting.extract(waiting.begin()) : typename Waiting::node_type();
        lock.unlock();
        if (done > told)
            finished(told = done);
        if (outcome)
            deliver(outcome.key(), std::move(outcome.mapped()));
        lock.lock();
        if (outcome)
            ++delivered;
        changed.notify_all();
    }
}

}  // namespace kestrelid::cli
