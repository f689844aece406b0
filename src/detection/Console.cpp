#include "detection/Console.h"

#include "base/ExitGate.h"
#include "base/Failures.h"

#include <cstdio>
#include <string>
#include <utility>

namespace kestrelid::detection {

namespace {

void printToStandardOutput(std::string_view line) {
    const std::string whole = std::string(line) + "\n";
    std::fwrite(whole.data(), 1, whole.size(), stdout);
    std::fflush(stdout);
}

}  // namespace

Console::Console(Sink sink) : sink_(sink ? std::move(sink) : printToStandardOutput) {}

void Console::tell(std::string_view label, std::string_view description) const noexcept {
    try {
        if (!base::ExitGate::isClosed())
            sink_(std::string(label) + " " + base::oneLine(description));
    } catch (...) {
    }
}

void Console::tellCaught(std::string_view label) const noexcept {
    try {
        tell(label, base::caughtFailure());
    } catch (...) {  // no memory even for the cause
        tell(label, {});
    }
}

}  // namespace kestrelid::detection
