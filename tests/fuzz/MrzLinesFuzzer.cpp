#include "detection/MrzLikeLines.h"
#include "tests/reference/PlainTextRules.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelid;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const MrzLikeLines answer = detection::detectMRZLikeLines(text);
    if (answer.found != answer.reason.starts_with("Found") ||
        (reference::knows(text) && answer != reference::mrzLikeLines(text)))
        std::abort();
    return 0;
}
