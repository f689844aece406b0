#pragma once

#include <kestrelid/DispatchQueue.h>

#include <memory>
#include <QObject>

namespace kestrelid {

// Blocks run from the event loop of the application's thread. One that is still waiting when the
// loop ends for good never runs.
class QtMainQueue final : public DispatchQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;

    void async(Block block) override;
    void asyncAfter(std::chrono::duration<double> delay, Block block) override;

private:
    // Receives the blocks. Each waiting block holds it, so that it outlives the queue.
    std::shared_ptr<QObject> receiver_;
};

}  // namespace kestrelid
