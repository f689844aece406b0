#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrelid::capture {

// Lets calls to a host through until it is closed. Thread: any.
class CallGate {
public:
    // Holds the gate open for one call. False if the gate was closed.
    class Pass {
    public:
        explicit Pass(CallGate& gate) : gate_(gate), entered_(gate.enter()) {}
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;
        ~Pass() {
            if (entered_)
                gate_.leave();
        }
        explicit operator bool() const { return entered_; }

    private:
        CallGate& gate_;
        bool entered_;
    };

    // Waits until the calls under way have returned, but not beyond limit, nor for a call that it
    // is itself made from; it returns false then.
    bool close(std::chrono::steady_clock::time_point limit);

private:
    bool enter();
    void leave();

    std::mutex mutex_;
    std::condition_variable left_;
    std::vector<std::thread::id> inside_;
    bool closed_ = false;
};

}  // namespace kestrelid::capture
