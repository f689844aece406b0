#include "capture/permission/ContextThread.h"

#include "capture/GLibHandles.h"

#include <deque>
#include <exception>
#include <mutex>
#include <utility>

namespace kestrelid::capture {

struct ContextThread::Loop {
    GLibHandle<GMainContext> context{g_main_context_new()};
    std::mutex mutex;
    std::deque<std::function<void()>> tasks;
    bool isEnding = false;

    // False if there was none.
    bool runNext() {
        std::function<void()> task;
        {
            const std::lock_guard lock(mutex);
            if (tasks.empty())
                return false;
            task = std::move(tasks.front());
            tasks.pop_front();
        }
        try {
            task();
        } catch (const std::exception&) {
            // Memory is short; whoever waits for the task sees that it has gone.
        }
        return true;
    }

    bool isDone() {
        const std::lock_guard lock(mutex);
        return isEnding && tasks.empty();
    }

    void run() {
        g_main_context_push_thread_default(context.get());
        while (!isDone()) {
            if (!runNext())
                g_main_context_iteration(context.get(), TRUE);
        }
        // Releases what a closed connection leaves behind.
        while (g_main_context_iteration(context.get(), FALSE)) {
        }
        g_main_context_pop_thread_default(context.get());
    }
};

ContextThread::ContextThread() : loop_(std::make_shared<Loop>()) {
    thread_ = std::thread([loop = loop_] { loop->run(); });
}

ContextThread::~ContextThread() {
    {
        const std::lock_guard lock(loop_->mutex);
        loop_->isEnding = true;
    }
    g_main_context_wakeup(loop_->context.get());
    if (isCurrent())
        thread_.detach();
    else
        thread_.join();
}

void ContextThread::post(std::function<void()> task) {
    {
        const std::lock_guard lock(loop_->mutex);
        loop_->tasks.push_back(std::move(task));
    }
    g_main_context_wakeup(loop_->context.get());
}

bool ContextThread::isCurrent() const {
    return thread_.get_id() == std::this_thread::get_id();
}

}  // namespace kestrelid::capture
