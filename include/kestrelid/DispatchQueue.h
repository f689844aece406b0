#pragma once

#include <kestrelid/Export.h>

#include <chrono>
#include <functional>

namespace kestrelid {

/// Runs blocks later, in the order in which they were submitted (a serial queue one after another,
/// a concurrent queue several at once). Duties of an implementation: neither call blocks or runs
/// the block before it returns; every block that was taken runs exactly once, also those still
/// waiting when the queue is released; the queue may be released from one of its own blocks, and
/// its release waits for no block. A queue that cannot take a block, for want of a thread or of
/// memory, throws what derives from std::exception, and the block never runs: the library makes a
/// failure of it. Thread: any.
class KESTRELID_EXPORT DispatchQueue {
public:
    /// Work to be done. The library's own blocks never throw.
    using Block = std::function<void()>;

    DispatchQueue() = default;
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;
    virtual ~DispatchQueue();

    /// Submits the block.
    virtual void async(Block block) = 0;

    /// Submits the block once delay seconds have passed.
    virtual void asyncAfter(std::chrono::duration<double> delay, Block block) = 0;
};

}  // namespace kestrelid
