#pragma once

#include <functional>
#include <memory>
#include <thread>

namespace kestrelid::capture {

// A thread with a main context of its own, so that D-Bus needs no main loop of the host. Releasing
// it runs the posted tasks and waits for the thread. Released on the thread itself, it lets that
// thread finish. Thread: any.
class ContextThread {
public:
    ContextThread();
    ~ContextThread();
    ContextThread(const ContextThread&) = delete;
    ContextThread& operator=(const ContextThread&) = delete;

    // Runs task on the thread, later, in order.
    void post(std::function<void()> task);

    [[nodiscard]] bool isCurrent() const;

private:
    struct Loop;
    std::shared_ptr<Loop> loop_;  // shared with the thread, which may outlive this object
    std::thread thread_;
};

}  // namespace kestrelid::capture
