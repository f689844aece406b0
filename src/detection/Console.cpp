#include "detection/Console.h"

#include "base/ExitGate.h"
#include "base/Failures.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <utility>

namespace kestrelid::detection {

namespace {

// Takes no memory, which may be what failed.
void printToStandardOutput(std::string_view line) {
    flockfile(stdout);
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
    funlockfile(stdout);
}

}  // namespace

Console::Console(Sink sink) : sink_(sink ? std::move(sink) : printToStandardOutput) {}

void Console::tell(std::string_view label, std::string_view description) const noexcept {
    if (base::ExitGate::isClosed())
        return;
    std::string line;
    std::array<char, 64> shortage{};
    std::string_view told;
    try {
        told = line = std::string(label) + " " + base::oneLine(description);
    } catch (...) {
        constexpr std::string_view kCause = " not enough memory";
        label = label.substr(0, shortage.size() - kCause.size());
        const auto end = std::ranges::copy(label, shortage.begin()).out;
        told = {shortage.begin(), std::ranges::copy(kCause, end).out};
    }
    try {
        sink_(told);
    } catch (...) {
    }
}

void Console::tellCaught(std::string_view label) const noexcept {
    try {
        tell(label, base::caughtFailure());
    } catch (...) {  // no memory for the cause
        tell(label, "not enough memory");
    }
}

}  // namespace kestrelid::detection
