#pragma once

#include <functional>
#include <string_view>

namespace kestrelid::detection {

// Where failures are told: the host's sink, or standard output without one. Thread: any, if the
// sink allows that.
class Console {
public:
    using Sink = std::function<void(std::string_view line)>;

    explicit Console(Sink sink);

    // One line: the label, a space, and the description without its control characters. What the
    // sink throws is dropped, since there is no other place to tell it.
    // Nothing is told once the process is ending: what fails then fails because of that.
    void tell(std::string_view label, std::string_view description) const noexcept;

    // Tells what is being handled. Call inside a catch block.
    void tellCaught(std::string_view label) const noexcept;

private:
    Sink sink_;
};

}  // namespace kestrelid::detection
