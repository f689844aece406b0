#include "vision/onnx/ExitGate.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace kestrelid::vision {
namespace {

struct Gate {
    std::shared_mutex inside;
    std::atomic<bool> isClosed = false;

    // Never destroyed: workers may come until the last moment.
    static Gate& only() {
        static auto* const gate = new Gate;
        return *gate;
    }
};

void close() {
    Gate& gate = Gate::only();
    gate.isClosed = true;
    const std::unique_lock everyoneLeft(gate.inside);
}

}  // namespace

void ExitGate::guard() {
    // A refused registration leaves the process to end as it would without the gate.
    [[maybe_unused]] static const int refused = std::atexit(close);
}

ExitGate::Pass::Pass() : lock_(Gate::only().inside), isInside_(!Gate::only().isClosed) {}

}  // namespace kestrelid::vision
