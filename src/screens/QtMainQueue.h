#pragma once

#include <kestrelid/DispatchQueue.h>

#include <memory>

namespace kestrelid::screens {

// Blocks run from the event loop of the application's thread. One that is still waiting when the
// application ends never runs.
class QtMainQueue final : public DispatchQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;

    void async(Block block) override;
    void asyncAfter(std::chrono::duration<double> delay, Block block) override;

private:
    class Receiver;

    std::shared_ptr<Receiver> receiver_;
};

}  // namespace kestrelid::screens
