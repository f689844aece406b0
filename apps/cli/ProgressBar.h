#pragma once

#include <cstddef>

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
    const std::size_t total_;
    const bool enabled_;
    bool shown_ = false;
};

}  // namespace kestrelid::cli
