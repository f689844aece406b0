#pragma once

#include <kestrelid/DispatchQueue.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace kestrelid::test {

// A queue that a test cranks by hand, with a clock that it sets by hand. One thread only.
class ManualQueue final : public DispatchQueue {
public:
    void async(Block block) override { asyncAfter({}, std::move(block)); }

    void asyncAfter(std::chrono::duration<double> delay, Block block) override {
        waiting_.push_back({now_ + delay.count(), std::move(block)});
    }

    [[nodiscard]] std::size_t waiting() const { return waiting_.size(); }

    // Runs the block that is due first, of equal ones the one submitted first; false where none is
    // due.
    bool runOne() {
        const auto next =
            std::min_element(waiting_.begin(), waiting_.end(),
                             [](const Waiting& a, const Waiting& b) { return a.due < b.due; });
        if (next == waiting_.end() || next->due > now_)
            return false;
        const Block block = std::move(next->block);
        waiting_.erase(next);
        block();
        return true;
    }

    void runAll() {
        while (runOne()) {
        }
    }

    // Lets go of what waits, and of what that holds: at a test's end, a manager that holds this
    // queue.
    void clear() { std::exchange(waiting_, {}).clear(); }

    void advance(double seconds) {
        now_ += seconds;
        runAll();
    }

private:
    struct Waiting {
        double due;  // seconds on this queue's clock
        Block block;
    };

    std::vector<Waiting> waiting_;
    double now_ = 0.0;
};

}  // namespace kestrelid::test
