#include "detection/MrzLikeLines.h"
#include "tests/reference/PlainTextRules.h"

#include <kestrelid/TextEvidence.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

// The line test holds on any bytes and agrees with the plain rules on UTF-8.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelid;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const MrzLikeLines answer = detection::detectMRZLikeLines(text);
    if (!invalidUtf8Offset(text) &&
        std::pair(answer.found, answer.reason) != reference::mrzLikeLines(text))
        std::abort();
    return 0;
}
