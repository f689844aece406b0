#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace kestrelid::cli {

// A bar on standard error, drawn over itself. Clear it before anything else is written to the
// terminal.
class ProgressBar {
public:
    // Stays silent unless standard error is a terminal and there are more than three things to do.
    explicit ProgressBar(std::size_t total);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    void show(std::size_t done);
    void clear();

private:
    [[nodiscard]] std::string remaining(std::size_t done) const;

    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const std::size_t total_;
    const bool enabled_;
    bool shown_ = false;
};

}  // namespace kestrelid::cli
