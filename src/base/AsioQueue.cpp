#include "base/AsioQueue.h"

#include "base/Failures.h"

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <mutex>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

namespace kestrelid::base {

struct AsioQueue::Loop : std::enable_shared_from_this<Loop> {
    explicit Loop(std::string name) : label(std::move(name)) {
        constexpr std::size_t kLongestThreadName = 15;  // bytes, Linux
        label.resize(std::min(label.size(), kLongestThreadName));
    }

    void startThread() {
        std::thread([loop = shared_from_this()] {
            pthread_setname_np(pthread_self(), loop->label.c_str());
            loop->context.run();
        }).detach();
        hasThread = true;
    }

    // Throws std::system_error if there is no thread and none can be had.
    void needThread() {
        const std::lock_guard lock(mutex);
        if (!hasThread)
            startThread();
    }

    void run(const Block& block) const noexcept { runBlock(label, block); }

    std::string label;
    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> stayOpen =
        asio::make_work_guard(context);
    std::mutex mutex;
    bool hasThread = false;
};

AsioQueue::AsioQueue(std::string label, int threads)
    : loop_(std::make_shared<Loop>(std::move(label))) {
    try {
        for (int index = 0; index < std::max(1, threads); ++index)
            loop_->startThread();
    } catch (const std::exception&) {
        // Those that could be started do the work.
    }
}

AsioQueue::~AsioQueue() {
    loop_->stayOpen.reset();
}

void AsioQueue::async(Block block) {
    loop_->needThread();
    asio::post(loop_->context,
               [loop = loop_.get(), block = std::move(block)] { loop->run(block); });
}

void AsioQueue::asyncAfter(std::chrono::duration<double> delay, Block block) {
    loop_->needThread();
    const auto timer = std::make_shared<asio::steady_timer>(
        loop_->context, std::chrono::ceil<asio::steady_timer::duration>(delay));
    timer->async_wait([timer, loop = loop_.get(),
                       block = std::move(block)](const std::error_code&) { loop->run(block); });
}

}  // namespace kestrelid::base
