#pragma once

#include <functional>
#include <unistd.h>
#include <utility>

namespace kestrelid::capture {

// An open file, closed with its owner.
class OwnedDescriptor {
public:
    OwnedDescriptor() = default;
    explicit OwnedDescriptor(int number) : number_(number) {}
    OwnedDescriptor(OwnedDescriptor&& other) noexcept
        : number_(std::exchange(other.number_, kNone)) {}
    OwnedDescriptor& operator=(OwnedDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~OwnedDescriptor() {
        if (isOpen())
            ::close(number_);
    }

    [[nodiscard]] bool isOpen() const noexcept { return number_ != kNone; }
    [[nodiscard]] int number() const noexcept { return number_; }

private:
    static constexpr int kNone = -1;
    int number_ = kNone;
};

// Opens a connection to PipeWire on which a sandbox sees the cameras that it was granted; none
// where it is refused. Takes up to a second. Thread: any.
using OpenCameraRemote = std::function<OwnedDescriptor()>;

}  // namespace kestrelid::capture
