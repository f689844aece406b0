#include "base/ExitGate.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unistd.h>
#include <utility>
#include <vector>

namespace kestrelid::base {

namespace {

struct Gate {
    std::mutex mutex;
    std::condition_variable left;
    ExitGate::Pass* first = nullptr;
    std::size_t inside = 0;  // passes
    std::vector<std::shared_ptr<const void>> kept;
    bool isClosed = false;

    static Gate& only();
};

// Never destroyed: workers may come until the last moment.
union Forever {
    Gate gate{};
    ~Forever() {}
};

Gate& Gate::only() {
    static Forever forever;
    return forever.gate;
}

thread_local std::size_t passesOfThisThread = 0;

}  // namespace

// The main thread's thread-local objects are destroyed before any static, those too that a library
// makes while it is first used. Other threads come and go.
struct EndOfMain {
    EndOfMain() = default;
    EndOfMain(const EndOfMain&) = delete;
    EndOfMain& operator=(const EndOfMain&) = delete;
    ~EndOfMain() {
        if (gettid() == getpid())
            ExitGate::close();
    }
    // Made when the library is loaded: without memory that stops the program, which must not
    // happen later.
    static bool watch() {
        thread_local const EndOfMain end;
        (void)end;
        ExitGate::guard();
        return true;
    }
};

namespace {
[[maybe_unused]] const bool isWatched = EndOfMain::watch();
}  // namespace

void ExitGate::guard() {
    // A refused registration leaves the process to end as it would without the gate.
    (void)std::atexit(close);
}

bool ExitGate::isClosed() noexcept {
    Gate& gate = Gate::only();
    const std::lock_guard lock(gate.mutex);
    return gate.isClosed;
}

void ExitGate::keep(std::shared_ptr<const void> owned) noexcept {
    Gate& gate = Gate::only();
    const std::lock_guard lock(gate.mutex);
    try {
        gate.kept.push_back(std::move(owned));
    } catch (const std::bad_alloc&) {
        // Released after all, which mostly goes well.
    }
}

void ExitGate::close() {
    constexpr std::chrono::seconds kPatience{5};
    Gate& gate = Gate::only();
    std::unique_lock lock(gate.mutex);
    gate.isClosed = true;
    for (const Pass* pass = gate.first; pass; pass = pass->after_)
        if (pass->interrupt_)
            pass->interrupt_();
    // A worker that ends the process from within would wait for itself.
    gate.left.wait_for(lock, kPatience, [&] { return gate.inside <= passesOfThisThread; });
}

ExitGate::Pass::Pass(std::function<void()> interrupt) noexcept : interrupt_(std::move(interrupt)) {
    Gate& gate = Gate::only();
    const std::lock_guard lock(gate.mutex);
    isInside_ = !gate.isClosed;
    if (!isInside_)
        return;
    after_ = std::exchange(gate.first, this);
    if (after_)
        after_->before_ = this;
    ++gate.inside;
    ++passesOfThisThread;
}

ExitGate::Pass::~Pass() {
    if (!isInside_)
        return;
    Gate& gate = Gate::only();
    const std::lock_guard lock(gate.mutex);
    (before_ ? before_->after_ : gate.first) = after_;
    if (after_)
        after_->before_ = before_;
    --gate.inside;
    --passesOfThisThread;
    gate.left.notify_all();
}

}  // namespace kestrelid::base
