#include "base/AsioQueue.h"

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <pthread.h>
#include <utility>

namespace kestrelid::base {

struct AsioQueue::Loop {
    asio::io_context context;
    asio::executor_work_guard<asio::io_context::executor_type> stayOpen =
        asio::make_work_guard(context);
};

AsioQueue::AsioQueue(std::string label, int threads) : loop_(std::make_shared<Loop>()) {
    constexpr std::size_t kLongestThreadName = 15;  // bytes, Linux
    label.resize(std::min(label.size(), kLongestThreadName));
    for (int index = 0; index < std::max(1, threads); ++index)
        threads_.emplace_back([loop = loop_, label] {
            pthread_setname_np(pthread_self(), label.c_str());
            loop->context.run();
        });
}

AsioQueue::~AsioQueue() {
    loop_->stayOpen.reset();
    // If a block of this queue releases it, no thread can be joined: none ends before that block
    // has returned.
    const bool isOwnThread =
        std::any_of(threads_.begin(), threads_.end(), [](const std::thread& thread) {
            return thread.get_id() == std::this_thread::get_id();
        });
    for (std::thread& thread : threads_)
        isOwnThread ? thread.detach() : thread.join();
}

void AsioQueue::async(Block block) {
    asio::post(loop_->context, std::move(block));
}

void AsioQueue::asyncAfter(std::chrono::duration<double> delay, Block block) {
    const auto timer = std::make_shared<asio::steady_timer>(
        loop_->context, std::chrono::ceil<asio::steady_timer::duration>(delay));
    timer->async_wait([timer, block = std::move(block)](const std::error_code&) { block(); });
}

}  // namespace kestrelid::base
