#pragma once

#include <functional>
#include <memory>

namespace kestrelid::base {

// Lets a process end while workers are inside a library whose statics end with the process, ONNX
// Runtime for one, or load a library: once the end has begun, the dynamic linker (glibc 2.36) runs
// the constructors of what that library needs again, and GLib aborts on it. The end waits until
// they have left, 5 s at most; who comes later is turned away.
//
// Only the process itself knows when it ends, so there is one gate. Thread: any.
class ExitGate {
public:
    // The gate closes by itself before any static is destroyed where the main thread ends the
    // process. Where another one does, what is registered last happens first: call this once the
    // statics that workers use are made.
    static void guard();

    // The process is ending: failures come from that, and nobody waits for results.
    [[nodiscard]] static bool isClosed() noexcept;

    // For a worker that was turned away: what it owns is never released.
    static void keep(std::shared_ptr<const void> owned) noexcept;

    // Inside as long as it lives; one thread may hold several.
    class Pass {
    public:
        // interrupt: called once, on another thread, if the process begins to end meanwhile; must
        // neither block nor throw.
        explicit Pass(std::function<void()> interrupt = {}) noexcept;
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass();
        // False: turned away.
        explicit operator bool() const noexcept { return isInside_; }

    private:
        friend ExitGate;

        std::function<void()> interrupt_;
        bool isInside_;
        Pass* before_ = nullptr;  // the passes inside are a list, which takes no memory
        Pass* after_ = nullptr;
    };

private:
    friend struct EndOfMain;
    static void close();
};

}  // namespace kestrelid::base
