#pragma once

#include <unistd.h>
#include <utility>

namespace kestrelid::base {

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
    ~OwnedDescriptor() { close(); }

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }

    // Whether what was written has arrived: network file systems tell only now.
    bool close() noexcept { return !isOpen() || ::close(std::exchange(number_, kNone)) == 0; }

private:
    static constexpr int kNone = -1;
    int number_ = kNone;
};

}  // namespace kestrelid::base
