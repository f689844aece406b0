#include "apps/cli/ProgressBar.h"

#include <cstdio>
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
    std::fprintf(stderr, "\r[%s] %zu of %zu%s\x1b[K", bar.c_str(), done, total_,
                 remaining(done).c_str());
    std::fflush(stderr);
    shown_ = true;
}

// Telling after a few: the first takes longer, since the models are loaded for it.
std::string ProgressBar::remaining(std::size_t done) const {
    constexpr std::size_t kTelling = 5;
    if (done < kTelling || done == total_)
        return "";
    const double taken =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    const auto seconds =
        static_cast<long>(taken / static_cast<double>(done) * static_cast<double>(total_ - done));
    char text[64];
    if (seconds < 60)
        std::snprintf(text, sizeof text, ", %ld s left", seconds + 1);
    else if (seconds < 3600)
        std::snprintf(text, sizeof text, ", %ld min left", seconds / 60 + 1);
    else
        std::snprintf(text, sizeof text, ", %ld h %ld min left", seconds / 3600, seconds / 60 % 60);
    return text;
}

void ProgressBar::clear() {
    if (!shown_)
        return;
    std::fputs("\r\x1b[K", stderr);  // to the start of the line, erase to its end
    std::fflush(stderr);
    shown_ = false;
}

}  // namespace kestrelid::cli
