#pragma once

#include <kestrelid/DispatchQueue.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace kestrelid::base {

// A queue with threads of its own: one thread makes it serial, several make it concurrent.
// Releasing it waits until all blocks, delayed ones too, have run; released from one of its own
// blocks it lets that thread finish by itself.
class AsioQueue final : public DispatchQueue {
public:
    // label: shown by debuggers as the name of the threads (Linux shows the first 15 bytes).
    // threads: at least 1.
    AsioQueue(std::string label, int threads);
    ~AsioQueue() override;

    void async(Block block) override;
    void asyncAfter(std::chrono::duration<double> delay, Block block) override;

private:
    struct Loop;
    std::shared_ptr<Loop> loop_;  // shared with the threads, which may outlive the queue
    std::vector<std::thread> threads_;
};

}  // namespace kestrelid::base
