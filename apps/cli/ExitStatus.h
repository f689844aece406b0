#pragma once

namespace kestrelid::cli {

enum class ExitStatus {
    done = 0,
    inputFailed = 1,  // some input could not be read; for doctor: something is missing
    wrongUsage = 2,
};

// The worse of two steps' statuses.
[[nodiscard]] constexpr ExitStatus graver(ExitStatus a, ExitStatus b) noexcept {
    return static_cast<int>(a) < static_cast<int>(b) ? b : a;
}

}  // namespace kestrelid::cli
