#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace kestrelid::cli {

struct ProcessResult {
    enum class End { exited, notStarted, tooLate, tooLarge };
    End end = End::notStarted;
    int status = -1;  // of exited: 0 to 255, or 128 and the signal's number; of notStarted: errno
    std::string output;  // what it wrote to standard output
    std::string errors;  // what it wrote to standard error, as far as the same limit
};

// Runs a program of the search path with nothing on standard input, and ends it when its time is
// up or it writes more than maximum bytes. Thread: any.
[[nodiscard]] ProcessResult runProcess(const std::vector<std::string>& command, std::size_t maximum,
                                       std::chrono::milliseconds patience);

}  // namespace kestrelid::cli
