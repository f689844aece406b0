#pragma once

#include <shared_mutex>

namespace kestrelid::vision {

// Keeps a process that ends from destroying ONNX Runtime's own statics under a worker that is
// still inside. The end waits for that one call; later calls are refused.
//
// Only the process itself knows when it ends, so the gate is one for all runtimes. Thread: any.
class ExitGate {
public:
    // Call once the library has made its statics: what is registered last happens first at the end.
    // Those that a first session makes are not covered while it is made.
    static void guard();

    // Inside as long as it lives.
    class Pass {
    public:
        Pass();
        // False: the process is ending.
        explicit operator bool() const noexcept { return isInside_; }

    private:
        std::shared_lock<std::shared_mutex> lock_;
        bool isInside_;
    };
};

}  // namespace kestrelid::vision
