#include "base/Failures.h"

#include "base/UnicodeText.h"

#include <cstdio>
#include <exception>
#include <new>

namespace kestrelid::base {

namespace {

// C0, DEL, C1 and the two separators that some terminals and viewers break a line at.
bool isControl(char32_t scalar) {
    return scalar < 0x20 || (scalar >= 0x7F && scalar < 0xA0) || scalar == 0x2028 ||
           scalar == 0x2029;
}

}  // namespace

std::string oneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t begin = offset;
        if (isControl(nextScalar(text, offset)))
            line += ' ';
        else
            line += text.substr(begin, offset - begin);
    }
    return line;
}

std::string caughtFailure() {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& exception) {
        return oneLine(exception.what());
    } catch (...) {
        return "unknown exception";
    }
}

void tellCaught(std::string_view place) noexcept {
    try {
        const std::string line = "kestrelid: " + std::string(place) + ": " + caughtFailure() + "\n";
        std::fwrite(line.data(), 1, line.size(), stderr);
    } catch (...) {  // no memory even for the words
        std::fputs("kestrelid: not enough memory\n", stderr);
    }
}

}  // namespace kestrelid::base
