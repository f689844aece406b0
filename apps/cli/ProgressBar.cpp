#include "apps/cli/ProgressBar.h"

#include <cstdio>
#include <string>
#include <unistd.h>

namespace kestrelid::cli {

ProgressBar::ProgressBar(std::size_t total)
    : total_(total), enabled_(total > 3 && ::isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() {
    clear();
}

void ProgressBar::show(std::size_t done) {
    if (!enabled_)
        return;
    constexpr std::size_t kWidth = 30;  // characters
    const std::size_t filled = done * kWidth / total_;
    const std::string bar = std::string(filled, '#') + std::string(kWidth - filled, '.');
    std::fprintf(stderr, "\r[%s] %zu of %zu", bar.c_str(), done, total_);
    std::fflush(stderr);
    shown_ = true;
}

void ProgressBar::clear() {
    if (!shown_)
        return;
    std::fputs("\r\x1b[K", stderr);  // to the start of the line, erase to its end
    std::fflush(stderr);
    shown_ = false;
}

}  // namespace kestrelid::cli
