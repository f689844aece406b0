#pragma once

#include <string>
#include <string_view>

// How failures are put into words. Thread: any.
namespace kestrelid::base {

// For whoever reads it; nobody compares it. Short enough for std::string to hold it without asking
// for memory.
inline constexpr const char* kOutOfMemory = "out of memory";

inline constexpr const char* kEnding = "the program is ending";

// The text in one line: line breaks and other control characters become spaces.
[[nodiscard]] std::string oneLine(std::string_view text);

// What the exception that is being handled says, in one line. Call inside a catch block.
[[nodiscard]] std::string caughtFailure();

// Tells on standard error, in one line, what is being handled at a place where nobody else could
// catch it. Call inside a catch block.
void tellCaught(std::string_view place) noexcept;

// Runs the block and tells what it throws.
template <typename Block>
void runBlock(std::string_view place, const Block& block) noexcept {
    try {
        block();
    } catch (...) {
        tellCaught(place);
    }
}

}  // namespace kestrelid::base
