#pragma once

#include <kestrelid/DispatchQueue.h>

#include <memory>
#include <string>

namespace kestrelid::base {

// A queue with threads of its own: one thread makes it serial, several make it concurrent. What a
// block throws is told on standard error. Releasing the queue waits for nothing: its threads end by
// themselves once all blocks, delayed ones too, have run.
class AsioQueue final : public DispatchQueue {
public:
    // label: shown by debuggers as the name of the threads (Linux shows the first 15 bytes).
    // threads: at least 1; where the machine refuses some, the others do the work, and where it
    // refuses all, each submission tries again.
    AsioQueue(std::string label, int threads);
    ~AsioQueue() override;

    void async(Block block) override;
    void asyncAfter(std::chrono::duration<double> delay, Block block) override;

private:
    struct Loop;
    std::shared_ptr<Loop> loop_;  // shared with the threads, which outlive the queue
};

}  // namespace kestrelid::base
